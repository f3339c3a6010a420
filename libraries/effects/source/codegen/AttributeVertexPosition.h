#pragma once

#include "codegen/AttributeVertex.h"

namespace Tarsel::Effects
{

// The vertex position: places the vertex and hands its homogeneous position to the ray stages.
class AttributeVertexPosition : public AttributeVertex
{
public:
	bool Init(TypeSpecifier type, const std::string& name);

	bool CollectTransformation(Module* module, CompoundStatement* body) override;
	AttributeSemantic GetSemantic() const override { return kSemantic_Position; }
};

} // namespace Tarsel::Effects
