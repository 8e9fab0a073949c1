#include "platform/process.h"
#include "shell/result.h"
#include "shell/shell.h"

int main(int argc, char** argv) {
    PROCESS_ReportExceptions(RESULT_WriteFault);
    return SHELL_Run(argc, argv);
}
