// Intermediate results that 64 bits do not hold.
#pragma once

namespace tsql {

__extension__ typedef __int128 Int128;

}  // namespace tsql
