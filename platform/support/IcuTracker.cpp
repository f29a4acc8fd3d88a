#include "platform/support/IcuTracker.h"

icuTracker::icuTracker(bool unicode_, const std::string& locale_)
    : unicode(unicode_), locale(locale_) {}

icuTracker::~icuTracker() = default;
