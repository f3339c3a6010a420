#include "values/PolicyAccessor.h"
#include "values/ValueFactory.h"

#include "core/Assert.h"
#include "core/Console.h"
#include "effects/MgrEffects.h"
#include "quillon/Reference.h"

#include <gtest/gtest.h>

#include <memory>

using namespace Tarsel;
using namespace Tarsel::Effects;

namespace
{
// Only the device context is asked of the manager here.
class ContextManager : public MgrEffects
{
public:
	explicit ContextManager(IQuillonContext* pContext) : _pContext(pContext) {}
	IQuillonContext* GetQuillonContext() const override { return _pContext; }

private:
	IQuillonContext* _pContext;
};

// Stand-in for the array parameter that owns a buffer storage.
struct ArrayOwner
{
	std::string GetNameMangled() const { return "colors_k1_k2"; }
};

struct StorageFixture : ::testing::Test
{
	RecordingConsole console;
	ScopedMgrConsole scopedConsole{&console};
	RecordingAssertHandler asserts;
	ScopedAssertHandler scopedAsserts{&asserts};
	ReferenceContext context;
	ContextManager manager{&context};
	ReferencePrimitive primitive;
	ArrayOwner owner;
	int nChangesValue = 0;
	std::vector<int> vLengths;

	bool OnChangeValue(IStorage*) { return ++nChangesValue, true; }
	bool OnChangeLength(IStorage*, int nValues) { return vLengths.push_back(nValues), true; }

	std::unique_ptr<IStorage> Separate(TypeSpecifier eType, int nValues, bool bResizable = false)
	{
		std::unique_ptr<IStorage> pStorage(CreateStorageSeparate(&manager, eType, nValues, bResizable));
		if (pStorage)
		{
			pStorage->AddListenerChangeValue(MakeDelegate(this, &StorageFixture::OnChangeValue));
			pStorage->AddListenerChangeLength(MakeDelegate(this, &StorageFixture::OnChangeLength));
		}
		return pStorage;
	}
	std::unique_ptr<IStorage> Buffer(TypeSpecifier eType, int nValues, bool bResizable = true)
	{
		return std::unique_ptr<IStorage>(CreateStorageBuffer(&manager, &owner, eType, nValues, bResizable));
	}
};
} // namespace

// Each element type must reach the one setter the program's uniform type accepts.
TEST_F(StorageFixture, SeparateApplyPicksTheSetterPerType)
{
	auto pBool = Separate(kType_Bool, 1);
	ASSERT_TRUE(pBool->Set(true, 0));
	ASSERT_TRUE(pBool->Apply(&primitive, nullptr, "flag", 1));
	EXPECT_EQ("", primitive.ExpectInt(1, 1));

	auto pBools = Separate(kType_Bool, 3);
	const bool aBools[3] = {true, false, true};
	ASSERT_TRUE(pBools->Set(aBools, 3));
	ASSERT_TRUE(pBools->Apply(&primitive, nullptr, "flags", 2));
	EXPECT_EQ("", primitive.ExpectInts(2, {1, 0, 1}));

	auto pFloat = Separate(kType_Float, 1);
	ASSERT_TRUE(pFloat->Set(0.25f, 0));
	ASSERT_TRUE(pFloat->Apply(&primitive, nullptr, "gain", 3));
	EXPECT_EQ("", primitive.ExpectFloat(3, 0.25f));

	auto pInts = Separate(kType_Int, 2);
	ASSERT_TRUE(pInts->Apply(&primitive, nullptr, "counts", 4));
	EXPECT_EQ("", primitive.ExpectInts(4, {0, 0}));

	auto pVec3 = Separate(kType_Vec3, 1);
	ASSERT_TRUE(pVec3->Set(Vector3f(1, 2, 3), 0));
	ASSERT_TRUE(pVec3->Apply(&primitive, nullptr, "color_k2a", 5));
	EXPECT_EQ("", primitive.ExpectArray<Vector3f>(5, {Vector3f(1, 2, 3)}));
	EXPECT_EQ("color_k2a", primitive.Last(5)->name);

	Matrix44f rows;
	rows(0, 1) = 3.0f;
	auto pMat4 = Separate(kType_Mat4, 1);
	ASSERT_TRUE(pMat4->Set(rows, 0));
	ASSERT_TRUE(pMat4->Apply(&primitive, nullptr, "xform", 6));
	EXPECT_EQ("", primitive.ExpectArray<Matrix44f>(6, {rows}));

	primitive.RefuseAll();
	EXPECT_FALSE(pVec3->Apply(&primitive, nullptr, "color_k2a", 5));
}

TEST_F(StorageFixture, SeparateSetAndLengthTellListeners)
{
	auto pStorage = Separate(kType_Vec2, 2, true);
	ASSERT_TRUE(pStorage->Set(Vector2f(1, 1), 1));
	EXPECT_FALSE(pStorage->Set(Vector2f(1, 1), 2));
	EXPECT_FALSE(pStorage->Set(1.0f, 0));
	EXPECT_EQ(1, nChangesValue);
	EXPECT_TRUE(console.HasMessage("Value::Set Index Out of Bounds\n"));

	ASSERT_TRUE(pStorage->SetLength(4));
	EXPECT_FALSE(pStorage->SetLength(-2));
	EXPECT_EQ(std::vector<int>{4}, vLengths);
	Vector2f read;
	ASSERT_TRUE(pStorage->Get(read, 1));
	EXPECT_EQ(Vector2f(1, 1), read);
	EXPECT_FALSE(pStorage->Get(read, 4));
}

TEST_F(StorageFixture, FactoryDefaultsAndRefusals)
{
	Matrix33f mat3;
	ASSERT_TRUE(Separate(kType_Mat3, 1)->Get(mat3, 0));
	EXPECT_EQ(Matrix33f(1.0f), mat3);
	Matrix44f mat4(2.0f);
	ASSERT_TRUE(Separate(kType_Mat4, 1)->Get(mat4, 0));
	EXPECT_EQ(Matrix44f(), mat4);
	QLtexture* pTexture = reinterpret_cast<QLtexture*>(&mat3);
	ASSERT_TRUE(Separate(kType_Sampler2D, 1)->Get(pTexture, 0));
	EXPECT_EQ(nullptr, pTexture);

	for (int eType : {0, 7, 8, 9, 13, 17, 18, 20, 21})
	{
		std::unique_ptr<IValue> pValue(CreateValue(TypeSpecifier(eType), 1, false));
		EXPECT_EQ(nullptr, pValue) << eType;
	}
	std::unique_ptr<IValueBuffer> pCube(CreateValueBuffer(&manager, kType_SamplerCube, 2, false));
	ASSERT_NE(nullptr, pCube);
	EXPECT_EQ(16u, pCube->GetBuffer()->GetSize());

	EXPECT_EQ(nullptr, Separate(kType_Float, -1));
	EXPECT_TRUE(asserts.HasExpression("nValues >=0"));
	ContextManager noContext(nullptr);
	EXPECT_EQ(nullptr, CreateValueBuffer(&noContext, kType_Float, 1, false));
	EXPECT_TRUE(asserts.HasExpression("pContext != NULL"));
}

TEST_F(StorageFixture, BufferApplyBindsTheOwnersBlock)
{
	auto pStorage = Buffer(kType_Float, 3);
	IQLBuffer* pBuffer = static_cast<IValueBuffer*>(pStorage->GetValue())->GetBuffer();
	ASSERT_TRUE(pStorage->Apply(&primitive, nullptr, "ignored", 7));
	EXPECT_EQ("", primitive.ExpectBlock(7, pBuffer));
	EXPECT_EQ("colors_k1_k2", primitive.Last(7)->name);

	primitive.Refuse(kQLSetter_UniformBlock);
	EXPECT_FALSE(pStorage->Apply(&primitive, nullptr, "ignored", 7));
	EXPECT_TRUE(
	    console.HasMessage("ParameterStorageApplyBuffer::Apply: Set Uniform Block failed (colors_k1_k2)\n"));

	context.FailNextCreateBuffer();
	auto pMissing = Buffer(kType_Float, 3);
	ASSERT_NE(nullptr, pMissing);
	EXPECT_TRUE(pMissing->Apply(&primitive, nullptr, "ignored", 8));
	EXPECT_TRUE(console.HasMessage(
	    "ParameterStorageApplyBuffer::Apply: Set Uniform Block impossible (colors_k1_k2) (NULL buffer)\n"));
	EXPECT_EQ(nullptr, Buffer(kType_BVec2, 1));
}

// Growing re-specifies the device buffer, whose old bytes are gone: the storage must write them back.
TEST_F(StorageFixture, BufferGrowKeepsValues)
{
	auto pStorage = Buffer(kType_IVec2, 2);
	const Vector2i aTwo[2] = {Vector2i(1, 2), Vector2i(3, 4)};
	ASSERT_TRUE(pStorage->Set(aTwo, 2));
	ASSERT_TRUE(pStorage->SetLength(3));
	Vector2i read;
	ASSERT_TRUE(pStorage->Get(read, 1));
	EXPECT_EQ(Vector2i(3, 4), read);
	ASSERT_TRUE(pStorage->Get(read, 2));
	EXPECT_EQ(Vector2i(), read);
	ASSERT_TRUE(pStorage->SetLength(1));
	ASSERT_TRUE(pStorage->Get(read, 0));
	EXPECT_EQ(Vector2i(1, 2), read);

	auto pFixed = Buffer(kType_Int, 2, false);
	EXPECT_FALSE(pFixed->SetLength(3));
	EXPECT_EQ(2, pFixed->GetLength());
}

namespace
{
// The shape of a single value parameter as far as the accessor layers need it.
class ParameterShape
{
public:
	virtual ~ParameterShape() = default;
	virtual bool Set(float) { return false; }
	virtual bool Set(const Vector3f&, int) { return false; }
	virtual bool Get(float&) const { return false; }
	std::string GetName() const { return "gain"; }
	std::string GetNameMangled() const { return "gain_k7"; }

protected:
	IStorage* _pStorage = nullptr;
};

class ParameterSingle : public ParameterShape
{
public:
	explicit ParameterSingle(IStorage* pStorage) { _pStorage = pStorage; }
};
} // namespace

TEST_F(StorageFixture, AccessorLayersForwardToStorage)
{
	auto pStorage = Separate(kType_Float, 1);
	ParameterValueSingleAccessors<ParameterSingle> parameter(pStorage.get());
	ParameterShape& shape = parameter;
	ASSERT_TRUE(shape.Set(0.5f));
	float read = 0;
	ASSERT_TRUE(shape.Get(read));
	EXPECT_EQ(0.5f, read);
	EXPECT_FALSE(parameter.Set(Vector3f(), 0));
	EXPECT_FALSE(parameter.Set(true, 1));
	ASSERT_TRUE(parameter.Apply(&primitive, nullptr, 9));
	EXPECT_EQ("", primitive.ExpectFloat(9, 0.5f));
	EXPECT_EQ("gain_k7", primitive.Last(9)->name);
}
