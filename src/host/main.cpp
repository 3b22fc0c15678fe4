// regscan: the command-line host of the RegPlugin plug-in.
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "Options.h"
#include "Program.h"

int main(int argc, char** argv) {
    std::ios::sync_with_stdio(false);
    try {
        std::vector<std::string> args(argv + 1, argv + argc);
        int status = regscan::runProgram(args, std::cin, std::cout, std::cerr);
        std::cout.flush();
        return status;
    } catch (const std::exception& e) {
        std::cerr << "regscan: internal error: " << e.what() << std::endl;
    } catch (...) {
        std::cerr << "regscan: internal error" << std::endl;
    }
    return regscan::EXIT_STATUS_INTERNAL;
}
