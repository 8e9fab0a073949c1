// The memory image as the records of each program file format.
#pragma once

#include "data/record_writer.h"

void _WriteIntelHex(RecordWriter& writer);
void _WriteSRecords(RecordWriter& writer);
