// Where the recent-file lists are kept: one small text file a list in the user's configuration
// folder. Failures are silent: a list that cannot be read is empty.
#pragma once

#include <string>
#include <vector>

// Entries in order, the most recent first.
std::vector<std::string> RECENTSTORE_Read(const std::string& listName);
void RECENTSTORE_Write(const std::string& listName, const std::vector<std::string>& entries);
