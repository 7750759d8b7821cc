// Where this host stands in the installation.
#pragma once

#include <string>
#include <string_view>

// The management server's host name, from the default instance.
bool readHostName(std::string& hostName, std::string& errorText);

// The instance named in the first line of the marker file "VorlentVM", which stands beside the module of that
// path; empty when the path has no folder or the file no such line.
std::string instanceFromMarkerFile(std::string_view modulePath);
