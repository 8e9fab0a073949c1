// The devices and ports that were configured last, for lists that begin with those; kept per user.
// An isolated run and one without windows keep none. User-interface thread.
#pragma once

#include <string>
#include <vector>

inline constexpr size_t kRecentChoices = 4; // of each kind

enum class RecentChoice { device, port };

// What is configured now is the most recent of its kind.
void RECENTCHOICES_Note(RecentChoice kind, const std::string& name);
// The most recent first. What is there no longer is among them.
std::vector<std::string> RECENTCHOICES_Get(RecentChoice kind);
// As in a fresh process: the lists are read anew.
void RECENTCHOICES_Reset();
