# Converts the plain comments of the exported headers to doxygen comments. The headers are not changed.

# Escapes doxygen's commands and tags; marks names of code.
/^[[:space:]]*\/\// {
  s/([@\\<>%#&])/\\\1/g
  s|`([^`]*)`|<tt>\1</tt>|g
}
# Comment of the file, on its first line.
1s|^// (.*)$|/// @file\n/// \1|
# Deletes headings between declarations.
/^[[:space:]]*\/\/ ---- .* -+$/ d
# Comments on lines of their own and after a declaration.
s|^([[:space:]]*)//( .*)?$|\1///\2|
s|([;,{])[[:space:]]+// (.*)$|\1  ///< \2|
