#pragma once

#include "codegen/AttributeVertex.h"

namespace Tarsel::Effects
{

// The vertex normal, passed on as it comes.
class AttributeVertexNormal : public AttributeVertex
{
public:
	bool Init(TypeSpecifier type, const std::string& name);

	bool CollectTransformation(Module* module, CompoundStatement* body) override;
	AttributeSemantic GetSemantic() const override { return kSemantic_Normal; }
};

} // namespace Tarsel::Effects
