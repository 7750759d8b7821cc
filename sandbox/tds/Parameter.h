// The parameters of remote procedure calls: read from the wire, written as T-SQL.
// [MS-TDS] 2.2.6.6 (RPC request), 2.2.5.4 (data types).
#pragma once

#include <optional>
#include <string>

#include "ByteReader.h"
#include "SqlType.h"

namespace tds {

struct Parameter {
    std::string name;  // with its @; empty when given by position
    bool output = false;
    tsql::SqlType type;
    // Text as UTF-8, binary as bytes, any other value as T-SQL writes it; empty for NULL.
    std::optional<Bytes> value;
};

// Name, flags, type and value. Throws ProtocolError, also for a type that parameters cannot have here.
Parameter readParameter(ByteReader& in);

// "nvarchar(30)"
std::string typeName(const tsql::SqlType& type);
// An expression of one line, so that what follows it keeps its line numbers.
std::string literal(const Parameter& parameter);

}  // namespace tds
