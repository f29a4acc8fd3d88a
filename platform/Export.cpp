#include "platform/Export.h"

#if defined(OM_HARDENING) && OM_HARDENING
const char libomplatform_with_OM_HARDENING_on = 1;
#else
const char libomplatform_with_OM_HARDENING_off = 1;
#endif
