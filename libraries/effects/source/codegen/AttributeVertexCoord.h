#pragma once

#include "codegen/AttributeVertex.h"

namespace Tarsel::Effects
{

// A coordinate that a shader of the graph reads, moved by the primitive's transformation where it is a
// direction.
class AttributeVertexCoord : public AttributeVertex
{
public:
	AttributeVertexCoord() : _eTransformation(kTransformation_Coord) {}

	bool Init(TypeSpecifier type, const std::string& name, TransformationCoord transformation);

	bool CollectTransformation(Module* module, CompoundStatement* body) override;
	AttributeSemantic GetSemantic() const override { return kSemantic_Coord; }
	TransformationCoord GetTransformation() const { return _eTransformation; }

private:
	TransformationCoord _eTransformation;
};

} // namespace Tarsel::Effects
