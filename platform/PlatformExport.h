// Export macro of the platform libraries; everything without it is hidden.
#pragma once

#define VT_PLATFORM_EXPORT __attribute__((visibility("default")))
