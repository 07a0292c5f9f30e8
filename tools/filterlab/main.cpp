#include <iostream>

#include "FilterLab.h"

int main(int argc, char** argv) {
    return filterlab::runFilterLab(argc, argv, std::cout, std::cerr);
}
