// Marks what libDVUtilities.so exports; everything else in it stays hidden.
#pragma once

#define DVU_EXPORT __attribute__((visibility("default")))
