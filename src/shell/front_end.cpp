#include "shell/front_end.h"

namespace {

FrontEnd current;

} // namespace

FrontEnd& FRONTEND_Get() {
    return current;
}

void FRONTEND_Set(FrontEnd frontEnd) {
    current = std::move(frontEnd);
}
