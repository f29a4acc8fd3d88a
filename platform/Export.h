// OM_PLATFORM_API marks what the platform library exports; everything else stays hidden.
//
// A program and its libraries have to agree about OM_HARDENING, because all of them compile the
// containers. Each source that includes this header references a symbol that names its mode, and
// the library defines the one for its own mode. So a mixed program does not link, and a library of
// the other mode is not loaded.

#ifndef PLATFORM_EXPORT_H
#define PLATFORM_EXPORT_H

#define OM_PLATFORM_API __attribute__((visibility("default")))

#if defined(OM_HARDENING) && OM_HARDENING
// Defined by a library that was built with OM_HARDENING on.
extern "C" OM_PLATFORM_API const char libomplatform_with_OM_HARDENING_on;
// References it; `retain` keeps the reference if the linker drops unused data.
[[gnu::used, gnu::retain,
  gnu::visibility("hidden")]] inline const char* const kOmPlatformHardeningOn =
    &libomplatform_with_OM_HARDENING_on;
#else
// Defined by a library that was built with OM_HARDENING off.
extern "C" OM_PLATFORM_API const char libomplatform_with_OM_HARDENING_off;
// References it; `retain` keeps the reference if the linker drops unused data.
[[gnu::used, gnu::retain,
  gnu::visibility("hidden")]] inline const char* const kOmPlatformHardeningOff =
    &libomplatform_with_OM_HARDENING_off;
#endif

#endif
