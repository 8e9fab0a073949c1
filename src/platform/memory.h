// Advice to the system about large blocks of memory.
#pragma once

#include <cstddef>

// For a block that is about to be filled: large pages save the cost of touching each small one for
// the first time. Only advice; the contents stay as they are. Any thread.
void MEMORY_PreferLargePages(void* block, size_t bytes);
