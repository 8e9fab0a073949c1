// What an argument that is not understood was probably meant to be.
#pragma once

#include <string>

// The name that is nearest to the argument, with what it begins with ("-OptionsCOMPort",
// "--isolated"); empty when none is near.
std::string HINT_NearestName(const std::string& argument);
