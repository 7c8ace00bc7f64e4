// Files that are written whole, or not at all.
#ifndef COMMAND_ANSWERS_FILEREPLACEMENT_H
#define COMMAND_ANSWERS_FILEREPLACEMENT_H

#include <string>

namespace zamofw {

// Writes the text into a new file that its owner alone can read, which then takes the name. Follows
// no symbolic link in a directory that everybody may write to, where anybody may have put it, and
// replaces nothing but a plain file. Throws Failure; what was there is then as it was.
void replaceFile(const std::string& path, const std::string& text);

}  // namespace zamofw

#endif
