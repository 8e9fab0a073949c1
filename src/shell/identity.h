// What the program is called.
#pragma once

#include <string>

inline constexpr char kProductName[] = "Calvorin";
// "1.26c"
std::string IDENTITY_Version();
// "Calvorin V1.26c"
std::string IDENTITY_Title();
// "Compile time: ..." of the About box.
inline constexpr char kCompileTime[] = "Compile time: 10:12:48 on Mar  9 2006";
// In the program folder.
std::string IDENTITY_HelpFile();
// Where the program keeps its state.
std::string IDENTITY_DefaultProject();
