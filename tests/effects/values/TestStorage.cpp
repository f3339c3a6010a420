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
		std::unique_ptr<IStorage> pStorage(CreateStorageBuffer(&manager, &owner, eType, nValues, bResizable));
		if (pStorage)
		{
			pStorage->AddListenerChangeValue(MakeDelegate(this, &StorageFixture::OnChangeValue));
			pStorage->AddListenerChangeLength(MakeDelegate(this, &StorageFixture::OnChangeLength));
		}
		return pStorage;
	}
};
// A linked program made current, so that the primitive checks every write against the program's uniforms
// by location, name, type and size.
class CurrentProgram
{
public:
	CurrentProgram(ReferenceContext& context, const std::string& sText) : _context(context)
	{
		IQLShader* pShader = context.CreateShader(IQLShader::kType_Ray);
		std::vector<std::string> vErrors;
		pShader->SetString(sText, vErrors);
		_pProgram = context.CreateProgram();
		_pProgram->AttachShader(pShader);
		_pProgram->Link(vErrors);
		for (const std::string& sError : vErrors)
			ADD_FAILURE() << sError;
		qlUseProgram(_pProgram);
	}
	~CurrentProgram()
	{
		qlUseProgram(nullptr);
		_context.DestroyProgram(_pProgram);
	}
	bool IsLinked() const { return _pProgram->IsLinked(); }
	int Uniform(const char* pName) const { return _pProgram->GetUniformLocation(pName); }
	int Block(const char* pName) const { return _pProgram->GetUniformBlockLocation(pName); }

private:
	ReferenceContext& _context;
	IQLProgram* _pProgram;
};

const char* const kUniforms = R"(uniform int count_k1;
uniform bool flag_k2;
uniform bool flags_k3[3];
uniform float gain_k4;
uniform float gains_k5[2];
uniform vec3 color_k6;
uniform ivec2 cells_k7[2];
uniform mat4 xform_k8;
uniform primitive target_k9;
uniform sampler2D grain_k10;
uniformblock colors_k1_k2
{
	float a[1];
};

void main()
{
}
)";

} // namespace

// Each element type must reach the one setter the program's uniform type accepts. Under a current program
// the device refuses any write whose setter, name or size does not fit the uniform.
TEST_F(StorageFixture, ApplyUnderALinkedProgram)
{
	CurrentProgram program(context, kUniforms);
	ASSERT_TRUE(program.IsLinked());
	auto Apply = [&](IStorage& storage, const char* pName)
	{
		const int iLocation = program.Uniform(pName);
		EXPECT_GE(iLocation, 0) << pName;
		EXPECT_TRUE(storage.Apply(&primitive, nullptr, pName, iLocation)) << pName;
		return iLocation;
	};

	auto pInt = Separate(kType_Int, 1);
	ASSERT_TRUE(pInt->Set(-3, 0));
	EXPECT_EQ("", primitive.ExpectInt(Apply(*pInt, "count_k1"), -3));
	auto pBool = Separate(kType_Bool, 1);
	ASSERT_TRUE(pBool->Set(true, 0));
	EXPECT_EQ("", primitive.ExpectInt(Apply(*pBool, "flag_k2"), 1));
	auto pBools = Separate(kType_Bool, 3);
	const bool aBools[3] = {false, true, true};
	ASSERT_TRUE(pBools->Set(aBools, 3));
	EXPECT_EQ("", primitive.ExpectInts(Apply(*pBools, "flags_k3"), {0, 1, 1}));
	auto pFloat = Separate(kType_Float, 1);
	ASSERT_TRUE(pFloat->Set(0.75f, 0));
	EXPECT_EQ("", primitive.ExpectFloat(Apply(*pFloat, "gain_k4"), 0.75f));
	auto pFloats = Separate(kType_Float, 2);
	EXPECT_EQ("", primitive.ExpectFloats(Apply(*pFloats, "gains_k5"), {0.0f, 0.0f}));
	auto pColor = Separate(kType_Vec3, 1);
	EXPECT_EQ("", primitive.ExpectArray<Vector3f>(Apply(*pColor, "color_k6"), {Vector3f()}));
	auto pCells = Separate(kType_IVec2, 2);
	ASSERT_TRUE(pCells->Set(Vector2i(4, 5), 1));
	EXPECT_EQ("", primitive.ExpectArray<Vector2i>(Apply(*pCells, "cells_k7"), {Vector2i(), Vector2i(4, 5)}));
	auto pMatrix = Separate(kType_Mat4, 1);
	EXPECT_EQ("", primitive.ExpectArray<Matrix44f>(Apply(*pMatrix, "xform_k8"), {Matrix44f()}));
	auto pTarget = Separate(kType_Primitive, 1);
	ASSERT_TRUE(pTarget->Set(QLprimitive(9), 0));
	EXPECT_EQ("", primitive.ExpectArray<QLprimitive>(Apply(*pTarget, "target_k9"), {QLprimitive(9)}));
	auto pGrain = Separate(kType_Sampler2D, 1);
	QLtexture* pTexture = reinterpret_cast<QLtexture*>(&primitive);
	ASSERT_TRUE(pGrain->Set(pTexture, 0));
	EXPECT_EQ("", primitive.ExpectArray<QLtexture*>(Apply(*pGrain, "grain_k10"), {pTexture}));

	auto pBlock = Buffer(kType_Float, 4);
	const int iBlock = program.Block("colors_k1_k2");
	ASSERT_GE(iBlock, 0);
	ASSERT_TRUE(pBlock->Apply(&primitive, nullptr, "ignored", iBlock));
	EXPECT_EQ("", primitive.ExpectBlock(iBlock, static_cast<IValueBuffer*>(pBlock->GetValue())->GetBuffer()));
	EXPECT_TRUE(primitive.GetViolations().empty()) << primitive.GetViolations().front();

	// The checks are live: a value under another uniform's location is refused.
	EXPECT_FALSE(pColor->Apply(&primitive, nullptr, "color_k6", program.Uniform("gain_k4")));
	EXPECT_EQ(1u, primitive.GetViolations().size());
	primitive.RefuseAll();
	EXPECT_FALSE(pColor->Apply(&primitive, nullptr, "color_k6", program.Uniform("color_k6")));
}

// Every write that reaches the buffer tells the change-value listeners once; refused ones tell nobody.
TEST_F(StorageFixture, BufferStorageTellsListeners)
{
	auto pStorage = Buffer(kType_Vec4, 2);
	ASSERT_TRUE(pStorage->Set(Vector4f(1, 2, 3, 4), 1));
	const Vector4f aTwo[2] = {Vector4f(5, 5, 5, 5), Vector4f(6, 6, 6, 6)};
	ASSERT_TRUE(pStorage->Set(aTwo, 2));
	EXPECT_FALSE(pStorage->Set(Vector4f(), 2));
	EXPECT_FALSE(pStorage->Set(aTwo, 3));
	EXPECT_EQ(2, nChangesValue);

	ASSERT_TRUE(pStorage->SetLength(5));
	ASSERT_TRUE(pStorage->SetLength(0));
	EXPECT_EQ((std::vector<int>{5, 0}), vLengths);

	pStorage->RemoveListenerChangeValue(MakeDelegate(this, &StorageFixture::OnChangeValue));
	ASSERT_TRUE(pStorage->SetLength(1));
	ASSERT_TRUE(pStorage->Set(Vector4f(), 0));
	EXPECT_EQ(2, nChangesValue);
}

// A buffer that refuses new storage leaves the length as it was, and says why.
TEST_F(StorageFixture, BufferInitRefusalKeepsTheLength)
{
	auto pStorage = Buffer(kType_Float, 2);
	const float aTwo[2] = {1.5f, 2.5f};
	ASSERT_TRUE(pStorage->Set(aTwo, 2));
	IQLBuffer* pBuffer = static_cast<IValueBuffer*>(pStorage->GetValue())->GetBuffer();
	{
		// The device refuses to map a mapped buffer, so the values to keep cannot be read back.
		QLBufferMapping held(pBuffer, QLBufferMapping::kAccess_Write);
		EXPECT_FALSE(pStorage->SetLength(3));
		EXPECT_TRUE(console.HasMessage("ValueBuffer<float>::GetArray Map Refused\n"));
		EXPECT_FALSE(pStorage->Set(3.5f, 0));
		EXPECT_TRUE(console.HasMessage("ValueBuffer<float>::Set Map Refused\n"));
	}
	EXPECT_EQ(2, pStorage->GetLength());
	EXPECT_TRUE(vLengths.empty());
	float read = 0;
	ASSERT_TRUE(pStorage->Get(read, 1));
	EXPECT_EQ(2.5f, read);

	EXPECT_EQ(nullptr, Buffer(kType_Float, -1));
	EXPECT_TRUE(asserts.HasExpression("nValues >=0"));
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
	// Regrown within the capacity, the elements beyond the length come back as defaults, not as old values.
	ASSERT_TRUE(pStorage->SetLength(3));
	ASSERT_TRUE(pStorage->Get(read, 1));
	EXPECT_EQ(Vector2i(), read);
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

// A parameter whose Init failed, or that was shut down, has no storage: every form answers false.
TEST_F(StorageFixture, AccessorLayersWithoutStorageAnswerFalse)
{
	ParameterValueSingleAccessors<ParameterSingle> parameter(nullptr);
	ParameterShape& shape = parameter;
	EXPECT_FALSE(shape.Set(0.5f));
	float read = 0;
	EXPECT_FALSE(shape.Get(read));
	EXPECT_FALSE(parameter.Set(Vector3f(), 0));
	EXPECT_FALSE(parameter.Set(Matrix33f()));
	EXPECT_FALSE(parameter.Set(7, 0));
	Vector2i cells;
	EXPECT_FALSE(parameter.Get(cells));
	QLtexture* pTexture = nullptr;
	EXPECT_FALSE(parameter.Get(pTexture, 0));
	EXPECT_FALSE(parameter.Apply(&primitive, nullptr, 9));
	EXPECT_TRUE(primitive.GetWrites().empty());
}

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
