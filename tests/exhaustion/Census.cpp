#define CENSUS template
#include "tests/exhaustion/Census.h"
