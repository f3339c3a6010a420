#include "quillon/FaultInjection.h"
#include "quillon/Reference.h"

#include <cstdarg>
#include <cstdio>

namespace Tarsel
{
namespace
{

// Program handles are process-wide so that qlUseProgram can find a program by handle alone.
unsigned gNextProgramHandle = 0;
std::map<unsigned, ReferenceProgram*>& ProgramsByHandle()
{
	static std::map<unsigned, ReferenceProgram*> programs;
	return programs;
}

IQLProgram* gCurrentProgram = nullptr;

bool ConsumeFailure(int& count)
{
	if (count <= 0)
		return false;
	--count;
	return true;
}

} // namespace

void qlUseProgram(IQLProgram* program)
{
	gCurrentProgram = program;
}

void qlUseProgram(unsigned handle)
{
	auto it = ProgramsByHandle().find(handle);
	gCurrentProgram = it == ProgramsByHandle().end() ? nullptr : it->second;
}

IQLProgram* qlGetCurrentProgram()
{
	return gCurrentProgram;
}

ReferenceContext::ReferenceContext() {}

ReferenceContext::~ReferenceContext()
{
	while (!_mPrograms.empty())
		DestroyProgram(_mPrograms.begin()->second);
	while (!_vShadersOrdered.empty())
		DestroyShader(_vShadersOrdered.back());
	while (!_setBuffers.empty())
		DestroyBuffer(*_setBuffers.begin());
}

IQLShader* ReferenceContext::CreateShader(int type)
{
	if (type < 0 || type >= IQLShader::kType_Count)
	{
		Message("ReferenceContext::CreateShader unknown type %d\n", type);
		return nullptr;
	}
	if (ConsumeFailure(_nFailShader) || QLFaultInjection::Fail("CreateShader"))
		return nullptr;
	ReferenceShader* shader = new ReferenceShader(this, type);
	_setShaders.insert(shader);
	_vShadersOrdered.push_back(shader);
	return shader;
}

void ReferenceContext::DestroyShader(IQLShader* shader)
{
	auto it = _setShaders.find(static_cast<ReferenceShader*>(shader));
	if (!shader || it == _setShaders.end())
	{
		if (shader)
			Message("ReferenceContext::DestroyShader unknown shader\n");
		return;
	}
	for (auto& entry : _mPrograms)
		entry.second->ForgetShader(shader);
	_setShaders.erase(it);
	for (size_t i = 0; i < _vShadersOrdered.size(); ++i)
	{
		if (_vShadersOrdered[i] == shader)
		{
			_vShadersOrdered.erase(_vShadersOrdered.begin() + long(i));
			break;
		}
	}
	delete shader;
}

IQLProgram* ReferenceContext::CreateProgram()
{
	if (ConsumeFailure(_nFailProgram) || QLFaultInjection::Fail("CreateProgram"))
		return nullptr;
	unsigned handle = ++gNextProgramHandle;
	ReferenceProgram* program = new ReferenceProgram(this, handle);
	_mPrograms[handle] = program;
	ProgramsByHandle()[handle] = program;
	return program;
}

void ReferenceContext::DestroyProgram(IQLProgram* program)
{
	ReferenceProgram* reference = ReferenceProgram::From(program);
	if (!reference || FindProgram(reference->GetHandle()) != reference)
	{
		if (program)
			Message("ReferenceContext::DestroyProgram unknown program\n");
		return;
	}
	if (gCurrentProgram == program)
		gCurrentProgram = nullptr;
	_mPrograms.erase(reference->GetHandle());
	ProgramsByHandle().erase(reference->GetHandle());
	delete reference;
}

IQLBuffer* ReferenceContext::CreateBuffer()
{
	if (ConsumeFailure(_nFailBuffer) || QLFaultInjection::Fail("CreateBuffer"))
		return nullptr;
	ReferenceBuffer* buffer = new ReferenceBuffer(this);
	_setBuffers.insert(buffer);
	return buffer;
}

void ReferenceContext::DestroyBuffer(IQLBuffer* buffer)
{
	auto it = _setBuffers.find(static_cast<ReferenceBuffer*>(buffer));
	if (!buffer || it == _setBuffers.end())
	{
		if (buffer)
			Message("ReferenceContext::DestroyBuffer unknown buffer\n");
		return;
	}
	if ((*it)->IsMapped())
		Message("ReferenceContext::DestroyBuffer buffer still mapped\n");
	_setBuffers.erase(it);
	delete buffer;
}

void ReferenceContext::Message(const char* format, ...)
{
	char stackBuffer[512];
	va_list args;
	va_start(args, format);
	va_list copy;
	va_copy(copy, args);
	int length = std::vsnprintf(stackBuffer, sizeof(stackBuffer), format, args);
	va_end(args);
	std::string text;
	if (length >= int(sizeof(stackBuffer)))
	{
		text.resize(size_t(length) + 1);
		std::vsnprintf(&text[0], text.size(), format, copy);
		text.resize(size_t(length));
	}
	else if (length > 0)
	{
		text.assign(stackBuffer, size_t(length));
	}
	va_end(copy);
	if (_bEcho)
		std::fputs(text.c_str(), stderr);
	_vMessages.push_back(std::move(text));
}

ReferenceProgram* ReferenceContext::FindProgram(unsigned handle) const
{
	auto it = _mPrograms.find(handle);
	return it == _mPrograms.end() ? nullptr : it->second;
}

bool ReferenceContext::OwnsBuffer(const IQLBuffer* buffer) const
{
	return _setBuffers.count(static_cast<ReferenceBuffer*>(const_cast<IQLBuffer*>(buffer))) != 0;
}

std::vector<ReferenceShader*> ReferenceContext::GetCompiledShaders(int type) const
{
	std::vector<ReferenceShader*> shaders;
	for (ReferenceShader* shader : _vShadersOrdered)
	{
		if (shader->GetType() == type && shader->IsCompiled())
			shaders.push_back(shader);
	}
	return shaders;
}

bool ReferenceContext::ConsumeFailLink()
{
	return ConsumeFailure(_nFailLink);
}

bool ReferenceContext::ConsumeFailAttach()
{
	return _nFailAttach > 0 && --_nFailAttach == 0;
}

} // namespace Tarsel
