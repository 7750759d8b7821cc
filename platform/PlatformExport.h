// Marks what the platform libraries export; everything else in them stays hidden.
#pragma once

#define VT_PLATFORM_EXPORT __attribute__((visibility("default")))
