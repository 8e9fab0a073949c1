// The loaded-data summary: the checksum of the selected blocks and whether the data fits into them;
// and the status texts that name the device and the port. Kept current by whoever changes the
// image, the device, the blocks or the port.
#pragma once

// Recomputes checksum and fits flag and refreshes the data views.
void SUMMARY_Refresh();
// Writes "MCU: %s" and "COM%d, %d Baud".
void SUMMARY_ShowStatusTexts();
