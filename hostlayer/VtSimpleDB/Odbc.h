// ODBC handles, and the one check that every call goes through.
#pragma once

#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>

#include <string>
#include <utility>

namespace hostlayer {

// A number where ODBC takes numbers and pointers in one argument.
inline SQLPOINTER odbcNumber(SQLULEN number) {
    return reinterpret_cast<SQLPOINTER>(number);  // NOLINT(performance-no-int-to-ptr): the interface is so
}

// A text where ODBC takes and hands out UTF-16.
static_assert(sizeof(SQLWCHAR) == sizeof(char16_t));
inline SQLWCHAR* odbcText(std::u16string& text) {
    return reinterpret_cast<SQLWCHAR*>(text.data());
}

// Owns a handle of any kind.
class OdbcHandle {
  public:
    OdbcHandle() = default;
    OdbcHandle(SQLSMALLINT type, SQLHANDLE parent);  // empty when it cannot be made
    static OdbcHandle environment();                 // the same
    OdbcHandle(OdbcHandle&& other) noexcept
        : m_type(other.m_type), m_handle(std::exchange(other.m_handle, nullptr)) {}
    OdbcHandle& operator=(OdbcHandle&& other) noexcept {
        std::swap(m_type, other.m_type);
        std::swap(m_handle, other.m_handle);
        return *this;
    }
    ~OdbcHandle();

    explicit operator bool() const { return m_handle != nullptr; }
    SQLHANDLE get() const { return m_handle; }

    // True unless the call on this handle failed. Every diagnostic record that it left (SQLSTATE, native
    // number, text) goes to the debug log; `action` says there what was done.
    bool check(SQLRETURN result, const char* action) const;

    // True when the last call left the record of an error, whatever it returned: a block of rows that an
    // error ended is a success to a driver.
    bool leftError() const;

  private:
    SQLSMALLINT m_type = 0;
    SQLHANDLE m_handle = nullptr;
};

}  // namespace hostlayer
