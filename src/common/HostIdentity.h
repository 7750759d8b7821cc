// Host name and instance of this host.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

inline constexpr std::size_t kNameSize = 1024;  // of buffers for names and paths, in bytes with the NUL

// Reads the management server's host name of the default instance.
bool readHostName(std::string& hostName, std::string& errorText);

// Returns the instance in the first line of the marker file "VorlentVM" in the module's folder; empty if the
// path has no folder or the file has no such line.
std::string instanceFromMarkerFile(std::string_view modulePath);
