#pragma once

#include "quillon/Quillon.h"

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace QlslTest
{

inline std::string ReadFixture(const std::string& name)
{
	std::ifstream file(std::string(TARSEL_TEST_DATA_DIR) + "/qlsl/" + name, std::ios::binary);
	std::ostringstream text;
	text << file.rdbuf();
	return text.str();
}

// Compiles text in a fresh shader of the context; answers the messages, empty on success.
inline std::vector<std::string> Compile(Tarsel::ReferenceContext& context, int type, const std::string& text,
                                        Tarsel::IQLShader** shader = nullptr)
{
	Tarsel::IQLShader* created = context.CreateShader(type);
	std::vector<std::string> errors;
	bool ok = created->SetString(text, errors);
	if (ok != errors.empty())
		errors.push_back("SetString answer disagrees with the messages");
	if (shader)
		*shader = created;
	return errors;
}

// The first message, or "" when the text compiled.
inline std::string FirstError(int type, const std::string& text)
{
	Tarsel::ReferenceContext context;
	std::vector<std::string> errors = Compile(context, type, text);
	return errors.empty() ? std::string() : errors.front();
}

// Replaces the first occurrence of what in text; the fixture must contain it.
inline std::string Replace(std::string text, const std::string& what, const std::string& with)
{
	size_t at = text.find(what);
	if (at == std::string::npos)
		return "<" + what + " not in fixture>";
	return text.replace(at, what.size(), with);
}

// 1-based line of the first occurrence of what.
inline int LineOf(const std::string& text, const std::string& what)
{
	size_t at = text.find(what);
	int line = 1;
	for (size_t i = 0; i < at && i < text.size(); ++i)
		line += text[i] == '\n';
	return line;
}

inline std::string LinePrefix(int line)
{
	return "ERROR: String 0 Line " + std::to_string(line) + ": ";
}

} // namespace QlslTest
