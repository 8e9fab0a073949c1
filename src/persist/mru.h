// The two lists of recently used paths, program files and projects, kept per user. Those of an
// isolated run begin empty and end with it.
// User-interface thread only.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

enum MruList : int { MRU_PROGRAMS = 0, MRU_PROJECTS = 1 };
inline constexpr int kMruLists = 2;
inline constexpr int kMruCapacity = 16;       // entries that a list can be made to hold
inline constexpr size_t kMruPathLength = 259; // characters; a longer path is not kept (log line)

// Reads the list from where it is kept; at most `capacity` entries.
void MRU_Init(int list, int capacity);
// Puts a path first; the oldest is dropped when the list is full. A path that is there already, in
// whatever case, changes nothing.
void MRU_Add(int list, std::string_view path);
// The entries, the most recent first.
const std::vector<std::string>& MRU_GetEntries(int list);
// Entry `index` counted from 0; empty when there is none.
std::string MRU_GetEntry(int list, int index);
// The text of the menu item for an entry: "&1 path" for index 0.
std::string MRU_MenuText(int list, int index);
