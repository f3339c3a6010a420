#pragma once

#include <string>

namespace Tarsel::Effects
{

// Maps of owned objects by name, as prototypes and shaders keep their parameters and members.
template <class Map>
void DestroyValues(Map& objects)
{
	for (auto& entry : objects)
		delete entry.second;
	objects.clear();
}

// Calls the visitor for every entry and answers whether all answered true.
template <class Map, class Visitor>
bool VisitValues(const Map& objects, Visitor& visitor)
{
	bool all = true;
	for (const auto& entry : objects)
		all = visitor(entry.first, entry.second) && all;
	return all;
}

template <class Map>
typename Map::mapped_type FindValue(const Map& objects, const std::string& name)
{
	auto found = objects.find(name);
	return found == objects.end() ? nullptr : found->second;
}

} // namespace Tarsel::Effects
