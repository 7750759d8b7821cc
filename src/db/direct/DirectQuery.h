// Queries on an open direct connection, with results as strings.
#pragma once

#include <string>
#include <vector>

class VTSimpleDBConnObject;

// Reads the first column of the first row. False on an error and without a row.
bool readFirstValue(VTSimpleDBConnObject& connection, const char* sql, std::string& value);

// Appends a row text of the first `columns` columns for each row. False on an error; if it comes between
// rows, the rows before it stay in the list.
bool readRows(VTSimpleDBConnObject& connection, const char* sql, int columns, char separator,
              std::vector<std::string>& rows);
