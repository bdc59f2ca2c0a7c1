#include <iostream>
#include <string>
#include <vector>

#include "checkercommands.h"

int main(int argc, char *argv[])
{
    return fleetwright::runCheckerCommand(std::vector<std::string>(argv + 1, argv + argc), std::cout, std::cerr);
}
