#include <string>
#include <vector>

#include "Sensord.h"

int main(int argc, char** argv) {
    return sensord::runSensord(std::vector<std::string>(argv + 1, argv + argc));
}
