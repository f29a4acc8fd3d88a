// OM_API marks what the library exports; everything else stays hidden. OM_PRIVATE keeps a nested
// class, such as a private record, out of what its exported class brings along.

#ifndef BACKEND_TABLES_OM_EXPORT_H
#define BACKEND_TABLES_OM_EXPORT_H

#define OM_API __attribute__((visibility("default")))
#define OM_PRIVATE __attribute__((visibility("hidden")))

#endif
