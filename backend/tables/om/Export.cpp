#include "backend/tables/om/Export.h"

#if defined(OM_HARDENING) && OM_HARDENING
const char libom_with_OM_HARDENING_on = 1;
#else
const char libom_with_OM_HARDENING_off = 1;
#endif
