// OM_PLATFORM_API marks what the platform library exports; everything else stays hidden.

#ifndef PLATFORM_EXPORT_H
#define PLATFORM_EXPORT_H

#define OM_PLATFORM_API __attribute__((visibility("default")))

#endif
