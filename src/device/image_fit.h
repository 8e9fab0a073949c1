// Whether the image may be written to the chip as the user has set it up.
#pragma once

// Whether every byte of the image lies in a selected block of the selected device. An empty image
// fits. User-interface thread.
bool DEVICE_ImageFits();
