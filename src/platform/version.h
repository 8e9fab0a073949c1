// The version of the program and of what is built with it.
#pragma once

inline constexpr char kProductVersion[] = "1.26c";
