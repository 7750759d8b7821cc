// Statements on an open direct connection, their results as texts.
#pragma once

#include <string>
#include <vector>

class VTSimpleDBConnObject;

// The first column of the statement's first row. False on an error and when there is no row.
bool readFirstValue(VTSimpleDBConnObject& connection, const char* sql, std::string& value);

// Appends one row text of the first `columns` columns a row. False on an error, one in the midst of the rows
// included: the rows before it stay in the list.
bool readRows(VTSimpleDBConnObject& connection, const char* sql, int columns, char separator,
              std::vector<std::string>& rows);
