// The file dialogs of the frame: the name's extension follows the chosen filter while saving, and
// an existing file is replaced without a question. User-interface thread.
#pragma once

#include "shell/front_end.h"

std::optional<FileChoice> FILEDIALOG_Choose(const FileRequest& request);

// "name" with the extension of the pattern ("*.hex"): the name is cut at its first dot. Unchanged
// for a pattern without a plain extension.
std::string FILEDIALOG_WithExtension(const std::string& name, const std::string& pattern);

// For tests: chooses in place of the dialog. An empty function brings the dialog back.
using FileResponder = std::function<std::optional<FileChoice>(const FileRequest&)>;
void FILEDIALOG_SetResponder(FileResponder responder);
