#pragma once

#include "quillon/IQLBuffer.h"
#include "quillon/IQLPrimitive.h"
#include "quillon/IQLProgram.h"
#include "quillon/IQLShader.h"
#include "quillon/IQuillonContext.h"
#include "quillon/QLRecord.h"

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

// The reference device: a strict software stand-in for the ray-tracing API. It compiles and links QLSL
// text for real (syntax, names, calls, link rules), assigns locations, and records every primitive
// write so that tests can read back exactly what reached the device.
namespace Tarsel
{

class ReferenceContext;
struct QLUnit; // the compiled form of one text, private to the device

// A uniform, uniform block or attribute of a linked program.
struct QLVariable
{
	std::string name;
	std::string type;  // the QLSL type name, e.g. "vec3", "sampler2D"; "uniformblock" for blocks
	int arraySize = 0; // 0 when not an array
	int location = -1;
};

class ReferenceShader : public IQLShader
{
public:
	ReferenceShader(ReferenceContext* context, int type);
	~ReferenceShader() override;

	void SetName(const char* name) override;
	void SetName(const std::string& name) override;
	const std::string& GetName() const override { return _sName; }
	bool SetString(const std::string& text, std::vector<std::string>& errors) override;
	const std::string& GetString() const override { return _sText; }
	bool IsCompiled() const override { return _pUnit != nullptr; }
	int GetType() const override { return _iType; }

	// Null unless the last SetString succeeded.
	const std::shared_ptr<const QLUnit>& GetUnit() const { return _pUnit; }
	// How the linker names this shader in messages: its name, or "shader <n>" without one.
	std::string GetLabel() const;
	unsigned GetId() const { return _nId; }

private:
	ReferenceContext* _pContext;
	int _iType;
	unsigned _nId;
	std::string _sName;
	std::string _sText;
	std::shared_ptr<const QLUnit> _pUnit;
};

class ReferenceProgram : public IQLProgram
{
public:
	ReferenceProgram(ReferenceContext* context, unsigned handle);
	~ReferenceProgram() override;

	// Null when program is not a reference program.
	static ReferenceProgram* From(IQLProgram* program);

	void SetName(const char* name) override;
	void SetName(const std::string& name) override;
	const std::string& GetName() const override { return _sName; }
	bool AttachShader(IQLShader* shader) override;
	bool DetachShader(IQLShader* shader) override;
	bool Link(std::vector<std::string>& errors) override;
	bool IsLinked() const override { return _bLinked; }
	int GetUniformLocation(const char* name) const override;
	int GetUniformBlockLocation(const char* name) const override;
	int GetAttributeLocation(const char* name) const override;
	unsigned GetHandle() const override { return _nHandle; }
	bool AddListenerChange(const ListenerChange& listener) override;
	bool RemoveListenerChange(const ListenerChange& listener) override;

	const std::vector<IQLShader*>& GetAttachedShaders() const { return _vAttached; }
	// The attached shaders plus those the linker pulled in from the context, as of the last good link.
	const std::vector<IQLShader*>& GetLinkedShaders() const { return _vLinked; }
	// The compiled texts of the last good link; each holds its typed tree
	// and stays valid while the program keeps this link, whatever happens to the shaders.
	const std::vector<std::shared_ptr<const QLUnit>>& GetLinkedUnits() const { return _vLinkedUnits; }
	// In location order.
	const std::vector<QLVariable>& GetUniforms() const { return _vUniforms; }
	const std::vector<QLVariable>& GetUniformBlocks() const { return _vUniformBlocks; }
	const std::vector<QLVariable>& GetAttributes() const { return _vAttributes; }
	const QLVariable* FindUniform(int location) const;
	const QLVariable* FindUniformBlock(int location) const;
	int GetCountLinks() const { return _nLinks; }

	// Called by the context when a shader goes away.
	void ForgetShader(IQLShader* shader);

private:
	ReferenceContext* _pContext;
	unsigned _nHandle;
	std::string _sName;
	bool _bLinked = false;
	int _nLinks = 0;
	std::vector<IQLShader*> _vAttached;
	std::vector<IQLShader*> _vLinked;
	std::vector<std::shared_ptr<const QLUnit>> _vLinkedUnits;
	std::vector<QLVariable> _vUniforms;
	std::vector<QLVariable> _vUniformBlocks;
	std::vector<QLVariable> _vAttributes;
	ListenerSet<ListenerChange> _setListenersChange;
};

class ReferenceBuffer : public IQLBuffer
{
public:
	explicit ReferenceBuffer(ReferenceContext* context);

	bool Storage(const void* data, size_t bytes) override;
	bool Respecify(const void* data, size_t bytes, bool orphan) override;
	size_t GetSize() const override { return _vBytes.size(); }
	void* Map(int access) override;
	void Unmap() override;

	bool HasStorage() const { return !_vBytes.empty(); }
	bool IsMapped() const { return _iMapped >= 0; }
	const unsigned char* GetBytes() const { return _vBytes.data(); }
	int GetCountMaps() const { return _nMaps; }
	int GetCountRespecifies() const { return _nRespecifies; }

private:
	ReferenceContext* _pContext;
	std::vector<unsigned char> _vBytes;
	std::vector<unsigned char> _vReadSnapshot; // catches writes through a read mapping, in check mode
	int _iMapped = -1;
	int _nMaps = 0;
	int _nRespecifies = 0;
};

class ReferenceContext : public IQuillonContext
{
public:
	ReferenceContext();
	// Destroys whatever the user left behind.
	~ReferenceContext() override;

	void SetDifferentialSupported(bool supported) { _bDifferential = supported; }
	// Check mode for read mappings: each read mapping snapshots the buffer and, at unmap, undoes and reports
	// writes made through it. Off by default, because the snapshot makes a read mapping cost the whole
	// buffer instead of the bytes read.
	void SetCheckReadMappings(bool check) { _bCheckReadMappings = check; }
	bool IsCheckingReadMappings() const { return _bCheckReadMappings; }
	bool IsDifferentialSupported() const override { return _bDifferential; }

	IQLShader* CreateShader(int type) override;
	void DestroyShader(IQLShader* shader) override;
	IQLProgram* CreateProgram() override;
	void DestroyProgram(IQLProgram* program) override;
	IQLBuffer* CreateBuffer() override;
	void DestroyBuffer(IQLBuffer* buffer) override;
	void Message(const char* format, ...) override
#if defined(__GNUC__)
	    __attribute__((format(printf, 2, 3)))
#endif
	    ;

	// Failure injection: the next count creations (or links) fail.
	void FailNextCreateShader(int count = 1)
	{
		_nFailShader = count;
	}
	void FailNextCreateProgram(int count = 1)
	{
		_nFailProgram = count;
	}
	void FailNextCreateBuffer(int count = 1)
	{
		_nFailBuffer = count;
	}
	void FailNextLink(int count = 1)
	{
		_nFailLink = count;
	}
	// The n-th attach from now of a shader to a program of this context fails, so that any one attach of
	// a sequence can be refused; 0 disarms.
	void FailNextAttach(int n = 1)
	{
		_nFailAttach = n;
	}

	// Everything sent to Message, one entry per call, plus device diagnostics (misuse of objects).
	const std::vector<std::string>& GetMessages() const
	{
		return _vMessages;
	}
	void ClearMessages()
	{
		_vMessages.clear();
	}
	// Also print messages to stderr.
	void SetEcho(bool echo)
	{
		_bEcho = echo;
	}

	size_t GetCountShaders() const
	{
		return _setShaders.size();
	}
	size_t GetCountPrograms() const
	{
		return _mPrograms.size();
	}
	size_t GetCountBuffers() const
	{
		return _setBuffers.size();
	}
	ReferenceProgram* FindProgram(unsigned handle) const;
	bool OwnsBuffer(const IQLBuffer* buffer) const;
	// Compiled shaders of a type in creation order; the linker looks here for functions a stage lacks.
	std::vector<ReferenceShader*> GetCompiledShaders(int type) const;

	// Used by the device objects.
	bool ConsumeFailLink();
	bool ConsumeFailAttach();
	unsigned NextShaderId()
	{
		return ++_nShaderIds;
	}

private:
	bool _bDifferential = true;
	bool _bCheckReadMappings = false;
	bool _bEcho = false;
	int _nFailShader = 0;
	int _nFailProgram = 0;
	int _nFailBuffer = 0;
	int _nFailLink = 0;
	int _nFailAttach = 0;
	unsigned _nShaderIds = 0;
	std::vector<std::string> _vMessages;
	std::vector<ReferenceShader*> _vShadersOrdered;
	std::set<ReferenceShader*> _setShaders;
	std::map<unsigned, ReferenceProgram*> _mPrograms;
	std::set<ReferenceBuffer*> _setBuffers;
};

// A primitive that records every write. When a linked program is current and the primitive is strict
// (the default), a write must match a uniform of that program by location, name and type, or it is
// refused and noted in GetViolations(). The name may also be the uniform's name without its key texts.
class ReferencePrimitive : public IQLPrimitive
{
public:
	explicit ReferencePrimitive(QLprimitive handle = 1);

	bool SetUniform(const std::string& name, int location, int value) override;
	bool SetUniform(const std::string& name, int location, float value) override;
	bool SetUniformArray(const std::string& name, int location, int count, const int* values) override;
	bool SetUniformArray(const std::string& name, int location, int count, const float* values) override;
	bool SetUniformArray(const std::string& name, int location, int count, const Vector2i* values) override;
	bool SetUniformArray(const std::string& name, int location, int count, const Vector3i* values) override;
	bool SetUniformArray(const std::string& name, int location, int count, const Vector4i* values) override;
	bool SetUniformArray(const std::string& name, int location, int count, const Vector2f* values) override;
	bool SetUniformArray(const std::string& name, int location, int count, const Vector3f* values) override;
	bool SetUniformArray(const std::string& name, int location, int count, const Vector4f* values) override;
	bool SetUniformArray(const std::string& name, int location, int count, const Matrix33f* values) override;
	bool SetUniformArray(const std::string& name, int location, int count, const Matrix44f* values) override;
	bool SetUniformArray(const std::string& name, int location, int count,
	                     const QLprimitive* values) override;
	bool SetUniformArray(const std::string& name, int location, int count, QLtexture* const* values) override;
	bool SetUniformBlock(const std::string& name, int location, IQLBuffer* buffer) override;
	void Bind() override;
	void Unbind() override;
	QLprimitive GetHandle() const override { return _nHandle; }

	bool IsBound() const { return _nBindDepth > 0; }
	void SetStrict(bool strict) { _bStrict = strict; }

	// Failure injection: refuse one setter kind (by enum or QLSetterName), or all of them.
	void Refuse(QLSetter setter);
	bool Refuse(const char* setterName);
	void RefuseAll();
	void AcceptAll();

	// Accepted writes in arrival order; refused writes are not recorded.
	const std::vector<QLWrite>& GetWrites() const { return _vWrites; }
	void ClearWrites() { _vWrites.clear(); }
	// The latest write to a location (under any program, or under one program); null when none.
	const QLWrite* Last(int location) const;
	const QLWrite* Last(unsigned program, int location) const;
	// By the name written or the uniform it reached (they differ for a value written under its declared
	// name).
	const QLWrite* LastByName(const std::string& name) const;
	size_t CountWrites(int location) const;
	// Misuse seen by this primitive: refused strict writes, unbalanced Unbind.
	const std::vector<std::string>& GetViolations() const { return _vViolations; }

	// One-line checks of the latest write to a location: "" when it matches, otherwise what differs.
	// ExpectInt/ExpectFloat mean the single-value setter; the others the array setter of the type.
	std::string ExpectInt(int location, int value) const;
	std::string ExpectFloat(int location, float value) const;
	std::string ExpectInts(int location, const std::vector<int>& values) const
	{
		return ExpectArray<int>(location, values);
	}
	std::string ExpectFloats(int location, const std::vector<float>& values) const
	{
		return ExpectArray<float>(location, values);
	}
	template <class T>
	std::string ExpectArray(int location, const std::vector<T>& values) const
	{
		return _Expect(location, QLArraySetter<T>::kValue, values.data(), values.size() * sizeof(T),
		               int(values.size()));
	}
	std::string ExpectBlock(int location, const IQLBuffer* buffer) const;

private:
	bool _Write(const std::string& name, int location, QLSetter setter, int count, const void* values,
	            size_t elementBytes, IQLBuffer* buffer);
	std::string _Check(const std::string& name, int location, QLSetter setter, int count,
	                   IQLBuffer* buffer) const;
	std::string _Expect(int location, QLSetter setter, const void* bytes, size_t size, int count) const;

	QLprimitive _nHandle;
	int _nBindDepth = 0;
	bool _bStrict = true;
	bool _bRefuseAll = false;
	std::set<QLSetter> _setRefused;
	std::vector<QLWrite> _vWrites;
	std::vector<std::string> _vViolations;
};

} // namespace Tarsel
