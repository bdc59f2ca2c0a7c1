#include <iostream>
#include <string>
#include <vector>

#include "cli/binaryoutput.h"
#include "cli/checkercommands.h"

int main(int argc, char *argv[])
{
    fleetwright::setBinaryStandardOutput();
    return fleetwright::runCheckerCommand(std::vector<std::string>(argv + 1, argv + argc), std::cout, std::cerr);
}
