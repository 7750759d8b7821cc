// Texts of a page.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

// As an element's text or an attribute's value in double quotes: nothing in it is markup. Control characters,
// and bytes that are no UTF-8, become blanks.
std::string html(std::string_view text);
// The form with each "{}" replaced by the next value, as it stands.
std::string filled(std::string_view form, std::initializer_list<std::string> values);

std::string numberText(std::int64_t number);                   // "1,234,567"
std::string countText(std::int64_t number, const char* noun);  // "1 run", "1,234 runs"
std::string percentText(double part);                          // of 1, for a coordinate: "12.5%"
