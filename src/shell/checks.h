// What is looked at before a program is written into a target, and the three commands that rest on
// it. The verdicts are pure; the commands report, ask and run. User-interface thread.
#pragma once

enum ResetVectorVerdict : int {
    RESET_VECTOR_NONE = 0,    // no complete vector that holds data
    RESET_VECTOR_OUTSIDE = 1, // the reset vector does not point into flash
    RESET_VECTOR_GOOD = 2,
    RESET_VECTOR_MISSING = 3, // vectors hold data, but none is a good reset vector
};
enum PasswordVerdict : int {
    PASSWORD_PLAUSIBLE = 0,
    PASSWORD_INCOMPLETE = 1,
    PASSWORD_UNIFORM = 2, // all bytes equal
};

// About the loaded image and the selected device.
ResetVectorVerdict CHECKS_ResetVector();
PasswordVerdict CHECKS_Password();

// Program, Auto and Verify of the loaded data.
void CHECKS_Program();
void CHECKS_Auto();
void CHECKS_Verify();
