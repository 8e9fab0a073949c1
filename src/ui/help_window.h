// The window that shows the help document beside a table of its headings. User-interface thread.
#pragma once

void HELP_ShowContents();
void HELP_ShowHelpOnHelp(); // at the heading that explains the window
void HELP_Close();
