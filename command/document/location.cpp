#include "command/document/location.h"

namespace zamofw {

std::string Location::pointer() const {
    if (parent_ == nullptr) {
        return {};
    }
    std::string text = parent_->pointer() + '/';
    if (!name_) {
        return text + std::to_string(index_);
    }
    for (const char character : *name_) {
        if (character == '~') {
            text += "~0";
        } else if (character == '/') {
            text += "~1";
        } else {
            text += character;
        }
    }
    return text;
}

}  // namespace zamofw
