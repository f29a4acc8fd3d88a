// Every public class of the library for front ends, for those who like one include.

#ifndef DISPLAY_DISPLAY_H
#define DISPLAY_DISPLAY_H

#include "display/CellNumber.h"
#include "display/Comparison.h"
#include "display/Footnotes.h"
#include "display/Formats.h"
#include "display/TableView.h"

#endif
