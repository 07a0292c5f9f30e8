#include <iostream>
#include <string>
#include <vector>

#include "TpsctlArgs.h"
#include "TpsctlClient.h"

int main(int argc, char** argv) {
    tpsctl::ParseResult parsed =
            tpsctl::parseArguments(std::vector<std::string>(argv + 1, argv + argc));
    if (!parsed.ok) {
        std::cerr << "tpsctl: " << parsed.error << "\nTry 'tpsctl --help'." << std::endl;
        return 2;
    }
    if (parsed.options.command == tpsctl::Command::kHelp) {
        std::cout << tpsctl::usageText();
        return 0;
    }
    return tpsctl::runCommand(parsed.options);
}
