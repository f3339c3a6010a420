#pragma once

#include <string>

namespace Tarsel::Effects
{

class FunctionPrototype;
class Key;

// Makes the name under which a method appears in generated code.
class IMangleMethod
{
public:
	virtual ~IMangleMethod() {}
	virtual std::string Mangle(const std::string& prefix, const FunctionPrototype* prototype) const = 0;
};

// prefix + method name + key text, so that each owner of a key gets names of its own.
class MangleMethodPrefixKey : public IMangleMethod
{
public:
	// The key is read at every call; it must outlive the mangler.
	explicit MangleMethodPrefixKey(const Key* key) : _pKey(key) {}
	std::string Mangle(const std::string& prefix, const FunctionPrototype* prototype) const override;

private:
	const Key* _pKey;
};

} // namespace Tarsel::Effects
