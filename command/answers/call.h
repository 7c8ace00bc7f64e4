// What the command line hands to an answer, beside the console.
#ifndef COMMAND_ANSWERS_CALL_H
#define COMMAND_ANSWERS_CALL_H

#include <string>
#include <vector>

namespace zamofw {

struct Call {
    std::vector<std::string> words;  // after the command's own, the global options taken out
    std::vector<std::string> given;  // the whole call as it was given, for the change log
};

}  // namespace zamofw

#endif
