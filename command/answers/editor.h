#ifndef COMMAND_ANSWERS_EDITOR_H
#define COMMAND_ANSWERS_EDITOR_H

#include <string>

namespace zamofw {

// Whether $VISUAL or $EDITOR names an editor.
[[nodiscard]] bool isEditorChosen();

// A text in a private file that an editor can work on. The file is gone at the end of the scope.
class EditedFile {
  public:
    // Throws Failure when the file cannot be made.
    explicit EditedFile(const std::string& text);
    ~EditedFile();
    EditedFile(const EditedFile&) = delete;
    EditedFile& operator=(const EditedFile&) = delete;

    // Runs $VISUAL, $EDITOR or the system's editor on the file, and gives back the text that it
    // holds then. The variable is split at blanks, and no shell sees it. Throws Failure when the
    // editor cannot be started or does not end well.
    [[nodiscard]] std::string edit() const;

    // Leaves the file where it is, for whoever does not want to lose the text, and gives back its
    // path.
    std::string keep();

  private:
    std::string directory_;
    std::string path_;
};

}  // namespace zamofw

#endif
