#pragma once

#include "QlslDiagnostics.h"
#include "QlslUnit.h"
#include "quillon/Reference.h"

#include <map>
#include <string>
#include <vector>

namespace Tarsel
{
namespace Qlsl
{

// Links the compiled shaders of one program: stage by stage, then the rules of the whole program.
class Linker
{
public:
	Linker(ReferenceContext* context, std::vector<std::string>& errors);

	// Shaders of one type, attached ones first; adds those the stage pulls in from the context.
	void AddStage(int type, std::vector<ReferenceShader*> shaders);
	void Finish();

	std::vector<IQLShader*> linked;
	std::vector<QLVariable> uniforms;
	std::vector<QLVariable> blocks;
	std::vector<QLVariable> attributes;

private:
	struct Declared
	{
		const QLUnitVariable* variable;
		const ReferenceShader* shader;
	};
	struct Definition
	{
		const QLUnitFunction* function;
		const ReferenceShader* shader;
	};

	void _Error(const ReferenceShader* shader, const std::string& message);
	void _PullIn(int type, std::vector<ReferenceShader*>& shaders);
	void _CheckMain(int type, const std::vector<ReferenceShader*>& shaders, size_t attached);
	std::map<std::string, Definition> _Definitions(const std::vector<ReferenceShader*>& shaders,
	                                               size_t attached);
	void _CheckPrototypes(const std::vector<ReferenceShader*>& shaders,
	                      const std::map<std::string, Definition>& defined);
	void _CheckRecursion(const std::map<std::string, Definition>& defined);
	void _Declare(std::map<std::string, Declared>& declared, const QLUnitVariable& variable,
	              const ReferenceShader* shader, bool sameStorage);
	void _DeclareBlock(const QLUnitBlock& block, const ReferenceShader* shader);
	void _CheckKinds();
	void _CheckVaryings();
	void _CheckNamespaces(const std::map<std::string, Declared>& uniformsByName);

	ReferenceContext* _pContext;
	std::vector<std::string>& _rErrors;
	std::map<int, std::map<std::string, Declared>> _mStageGlobals;
	std::map<std::string, std::pair<const QLUnitBlock*, const ReferenceShader*>> _mBlocks;
};

} // namespace Qlsl
} // namespace Tarsel
