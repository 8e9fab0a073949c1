// What the desktop tells of the link at a glance: one of six states. User-interface thread.
#pragma once

enum class LinkShown { noPort, portOpen, bootRom, loader, busy, lost };

LinkShown LINKSHOWN_Get();
// "Loader runs", to stand alone.
const char* LINKSHOWN_Text(LinkShown state);
