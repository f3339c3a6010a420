#include "Commands.h"

#include <iostream>

int main(int argc, char** argv)
{
	return Tarsel::Fx::Main(argc, argv, std::cout, std::cerr);
}
