// The dialog of the interrupt vectors and its stored column widths.
#pragma once

// Forgets the stored widths: the dialog opens with its defaults again.
void IVECT_RestoreDefault();
