#pragma once

#include "quillon/QLTypes.h"

#include <string>
#include <vector>

namespace Tarsel
{

// One compilation unit of QLSL text of a given stage type.
class IQLShader
{
public:
	enum Type
	{
		kType_Ray = 0,
		kType_Vertex = 1,
		kType_Frame = 2,
		kType_PrefixRay = 3,
		kType_Count = 4
	};

	virtual ~IQLShader() {}

	virtual void SetName(const char* name) = 0;
	virtual void SetName(const std::string& name) = 0;
	virtual const std::string& GetName() const = 0;

	// Compiles the text; errors receives every compiler message ("ERROR: String 0 Line N: ...").
	// The last text given is kept even when it fails, so a failed shader can be inspected.
	virtual bool SetString(const std::string& text, std::vector<std::string>& errors) = 0;
	virtual const std::string& GetString() const = 0;
	virtual bool IsCompiled() const = 0;

	virtual int GetType() const = 0;
};

} // namespace Tarsel
