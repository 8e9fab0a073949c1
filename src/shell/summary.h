// What is derived from the image and from the settings of the program, and who shows it. Whoever
// changes one of them calls the operation for it. User-interface thread only.
#pragma once

// The image has changed: recomputes its checksum over the selected blocks and whether it fits into
// them, and refreshes the data views.
void SUMMARY_Refresh();
// The device, its blocks, the port or a whole project has changed: all that depends on them, the
// summary of the image, the limits of the password, the device view and the status texts included.
void CONFIGURATION_Changed();
