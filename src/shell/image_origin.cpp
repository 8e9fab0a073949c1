#include "shell/image_origin.h"

#include "data/hexdata.h"
#include "shell/front_end.h"
#include "shell/identity.h"
#include "shell/session.h"

void ORIGIN_Set(const ImageOrigin& origin) {
    SESSION_Get().image = origin;
    ORIGIN_ShowTitle();
}

void ORIGIN_MarkChanged() {
    SESSION_Get().image.changed = SESSION_Get().image.kind != ImageKind::none;
    ORIGIN_ShowTitle();
}

void ORIGIN_Begin() {
    SESSION_Get().loaded = true;
    ImageOrigin origin;
    origin.kind = ImageKind::begun;
    origin.changed = true;
    ORIGIN_Set(origin);
}

std::string ORIGIN_Text() {
    const ImageOrigin& image = SESSION_Get().image;
    if (image.kind == ImageKind::none) {
        return "";
    }
    return (image.kind == ImageKind::readBack ? "Read back"
            : image.kind == ImageKind::begun  ? "New program"
                                              : image.path) +
           (image.merged > 0 ? " + " + std::to_string(image.merged) : "") +
           (image.changed ? " *" : "");
}

std::string ORIGIN_ProgramFile() {
    const ImageOrigin& image = SESSION_Get().image;
    const bool isOfFile = image.kind == ImageKind::file || image.kind == ImageKind::files;
    return isOfFile && !HEXDATA_IsEmpty() ? image.path : "";
}

void ORIGIN_ShowTitle() {
    const std::string& project = SESSION_Get().projectPath;
    const std::string image = ORIGIN_Text();
    FRONTEND_Get().setTitle(IDENTITY_Title() + (project.empty() ? "" : ": " + project) +
                            (image.empty() ? "" : " - " + image));
}
