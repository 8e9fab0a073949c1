// -FilePatchADDRESS=HEXBYTES and -FilePatchADDRESS=@FILE: a serial number or a key into the image
// of one board. User-interface thread.
#pragma once

#include "shell/cmdline_values.h"

// Reads the argument with the getters of cmdline_values.h into what is to be done.
ArgumentValue CMDLINE_Patch();
