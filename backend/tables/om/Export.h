// OM_API marks what the library exports; everything else stays hidden. OM_PRIVATE hides a nested
// class, such as a private record, of an exported class.
//
// A program and its libraries have to agree about OM_HARDENING; platform/Export.h says how a mixed
// program fails to link. The platform is replaceable, so this library defines symbols of its own.

#ifndef BACKEND_TABLES_OM_EXPORT_H
#define BACKEND_TABLES_OM_EXPORT_H

#define OM_API __attribute__((visibility("default")))
#define OM_PRIVATE __attribute__((visibility("hidden")))

#if defined(OM_HARDENING) && OM_HARDENING
// Defined by a library that was built with OM_HARDENING on.
extern "C" OM_API const char libom_with_OM_HARDENING_on;
// References it; `retain` keeps the reference if the linker drops unused data.
[[gnu::used, gnu::retain, gnu::visibility("hidden")]] inline const char* const kOmHardeningOn =
    &libom_with_OM_HARDENING_on;
#else
// Defined by a library that was built with OM_HARDENING off.
extern "C" OM_API const char libom_with_OM_HARDENING_off;
// References it; `retain` keeps the reference if the linker drops unused data.
[[gnu::used, gnu::retain, gnu::visibility("hidden")]] inline const char* const kOmHardeningOff =
    &libom_with_OM_HARDENING_off;
#endif

#endif
