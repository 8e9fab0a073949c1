#include "platform/event_queue.h"
#include "shell/shell_world.h"
#include "shell/startup.h"

#include <gtest/gtest.h>

TEST(Startup, OpensTheLogBeforeAnythingIsLogged) {
    ShellWorld world;
    world.addFile("a.dev", kHead);
    writeFile(world.folder / "tool.ini",
              "[Settings MAINFRAME]\nShowLog = 1\n[Settings PORTS]\nCOM1 = \"/none\"\n");
    FRONTEND_Get().hasWindows = true;
    FRONTEND_Get().openView = [&world](View) { world.log += "(view)"; };
    EVENTS_Open();
    EXPECT_TRUE(STARTUP_Run({"none.hex"}));
    STARTUP_Close();
    EXPECT_TRUE(world.log.starts_with("(view)Opening none.hex")) << world.log;
}
