#include "Application.h"

int main(int argc, char** argv) {
    return zel::tool::runApplication(argc, argv);
}
