#include "shell/session.h"

#include "shell/front_end.h"

namespace {

Session session;

} // namespace

Session& SESSION_Get() {
    return session;
}

TargetBusy::TargetBusy() {
    session.targetBusy = true;
    FRONTEND_Get().updateMenu();
}

TargetBusy::~TargetBusy() {
    session.targetBusy = false;
    FRONTEND_Get().updateMenu();
}
