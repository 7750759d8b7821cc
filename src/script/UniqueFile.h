// Files under names that nobody else has.
#pragma once

#include <functional>
#include <string>

class CVoError;
class CVoFile;

// Builds paths until one of them does not exist and can be created, at most 100 times. The file is created
// exclusively, readable by its owner only, so that neither another's file nor a link is opened in its place;
// `file` holds it, open with `access` (O_RDONLY, O_WRONLY). `path` is the last path tried, whatever the
// result. `failed` hears of every path that could not be created; one that exists is passed over in silence.
bool createUnique(CVoFile& file, int access, std::string& path, const std::function<std::string()>& nextPath,
                  const std::function<void(const CVoError&)>& failed);
