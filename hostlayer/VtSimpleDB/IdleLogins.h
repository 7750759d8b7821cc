// Logins that closed connections have left, for the process's next connections of the same connection string.
// Safe for use by several threads. A fork closes them.
#pragma once

#include <chrono>
#include <memory>
#include <string_view>

#include "Login.h"

namespace hostlayer {

// Returns an idle login that is alive, or null.
std::unique_ptr<Login> takeIdleLogin(std::string_view connectionString, bool readOnly);

// Keeps a login for this time; then closes it. With more than a fixed number the oldest is closed. A login
// that is not reusable is closed at once.
void keepIdleLogin(std::unique_ptr<Login> login, std::chrono::seconds time);

void closeIdleLogins();

// The same, and waits for the server to end their sessions, so that a statement may need a database alone.
void endIdleSessions();

}  // namespace hostlayer
