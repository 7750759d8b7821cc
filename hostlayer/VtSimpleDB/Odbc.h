// Owner of an ODBC handle, and the check of every ODBC call.
#pragma once

#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>

#include <string>
#include <utility>

namespace hostlayer {

// An integer attribute value: ODBC passes integers and pointers in the same argument.
inline SQLPOINTER odbcNumber(SQLULEN number) {
    return reinterpret_cast<SQLPOINTER>(number);  // NOLINT(performance-no-int-to-ptr): as ODBC defines it
}

// The string's buffer, in the type of ODBC's UTF-16 functions.
static_assert(sizeof(SQLWCHAR) == sizeof(char16_t));
inline SQLWCHAR* odbcText(std::u16string& text) {
    return reinterpret_cast<SQLWCHAR*>(text.data());
}

// Move-only owner of a handle of any type. Frees it without disconnecting.
class OdbcHandle {
  public:
    OdbcHandle() = default;

    // Both are empty when the driver manager cannot allocate the handle. `parent` must outlive the handle.
    OdbcHandle(SQLSMALLINT type, SQLHANDLE parent);
    static OdbcHandle environment();

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

    // Returns whether an ODBC call on this handle succeeded. Logs all its diagnostic records (SQLSTATE,
    // native error number, text) to the debug log under the name `action`: errors at level 1, information at
    // level 3. Errors are noted as causes, too (VtCauses.h).
    bool check(SQLRETURN result, const char* action) const;
    // Reports, as check() does, the diagnostic records of a call that has failed, whatever it returned.
    void reportFailure(const char* action) const;

    // True if one of the last call's diagnostic records is an error. Drivers return success for a block of
    // rows that an error has cut short.
    bool hasErrorRecord() const;

    // True if one of the last call's diagnostic records is a message of the server, not of FreeTDS.
    bool hasServerMessage() const;

  private:
    SQLSMALLINT m_type = 0;
    SQLHANDLE m_handle = nullptr;
};

}  // namespace hostlayer
