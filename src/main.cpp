#include "platform/process.h"
#include "shell/shell.h"

int main(int argc, char** argv) {
    PROCESS_ReportExceptions();
    return SHELL_Run(argc, argv);
}
