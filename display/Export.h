// OM_DISPLAY_API marks what the library for front ends exports; everything else stays hidden.

#ifndef DISPLAY_EXPORT_H
#define DISPLAY_EXPORT_H

#define OM_DISPLAY_API __attribute__((visibility("default")))

#endif
