// OM_API marks what the library exports; everything else stays hidden.

#ifndef BACKEND_TABLES_OM_EXPORT_H
#define BACKEND_TABLES_OM_EXPORT_H

#define OM_API __attribute__((visibility("default")))

#endif
