// Follows the log for the log view. User-interface thread; lines may be added on any.
#pragma once

void LOGVIEW_Install();
void LOGVIEW_Remove();
