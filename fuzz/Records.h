// The fuzzers over records that come from outside the process, each beside a naive reader.

#ifndef FUZZ_RECORDS_H
#define FUZZ_RECORDS_H

// The map information of a chart, delivered in two chunks.
void CheckMapInfo(const unsigned char* data, unsigned long size);

// The sample program's comma-separated files.
void CheckCsv(const unsigned char* data, unsigned long size);

#endif
