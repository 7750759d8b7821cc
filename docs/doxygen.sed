# Gives the plain comments of the exported headers the form that doxygen reads; the headers stay as they are.

# What doxygen would take for a command or a tag; then names of code.
/^[[:space:]]*\/\// {
  s/([@\\<>%#&])/\\\1/g
  s|`([^`]*)`|<tt>\1</tt>|g
}
# The file's own comment, which its first line begins.
1s|^// (.*)$|/// @file\n/// \1|
# Headings between declarations.
/^[[:space:]]*\/\/ ---- .* -+$/ d
# A comment of its own, and one behind a declaration.
s|^([[:space:]]*)//( .*)?$|\1///\2|
s|([;,{])[[:space:]]+// (.*)$|\1  ///< \2|
