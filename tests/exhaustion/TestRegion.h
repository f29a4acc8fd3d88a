// What the memory region of these tests knows about its blocks.
//
// TestRegion.cpp defines OmMemoryRegion for the test program, and a program's definition takes the
// place of a shared library's: everything that the libraries allocate from a region comes from
// here. Each block is the system's own, so a sanitizer sees its bounds; fresh and released storage
// is filled with patterns; what is released twice, or never came from a region, ends the process.

#ifndef TESTS_EXHAUSTION_TESTREGION_H
#define TESTS_EXHAUSTION_TESTREGION_H

namespace regions {

// Blocks of all regions that are allocated and not released.
long LiveBlocks();
// Blocks that regions still held when they were destroyed.
long LostBlocks();

}  // namespace regions

#endif
