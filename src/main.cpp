#include "shell/shell.h"

int main(int argc, char** argv) {
    return SHELL_Run(argc, argv);
}
