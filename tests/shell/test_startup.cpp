#include "device/image_checksum.h"
#include "notice/status.h"
#include "platform/event_queue.h"
#include "shell/identity.h"
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

// The project's file is opened before the project names the device.
TEST(Startup, JudgesTheProjectsFileByTheProjectsDevice) {
    const struct {
        const char* inSettings;
        const char* inProject;
        bool fits;
    } cases[] = {{"0", "LOW", true}, {"1", "LOW", true}, {"0", "HIGH", false}};
    for (const auto& c : cases) {
        const ShellWorld world;
        DEVICE_Clear();
        const std::string name = "Manufacturer = \"M\"\nDevice = ";
        world.addFile("a.dev", name + "\"LOW\"\nBank = 0, 100\nIDLenMax = 4\n");
        world.addFile("b.dev", name + "\"HIGH\"\nBank = 8000, 100\nIDLenMax = 8\nSprtCRC = 1\n");
        const std::string file = (world.folder / "app.hex").string();
        writeFile(file, ":0400000001020304F2\n:00000001FF\n");
        writeFile(IDENTITY_DefaultProject(),
                  "File = \"" + file + "\"\nDevice = \"" + c.inProject + "\"\n");
        writeFile(world.folder / "tool.ini",
                  std::string("[Settings DEVICEPROPS]\nDevProps.Device = ") + c.inSettings +
                      "\nDevProps.aBlockSelect[1] = 1\n[Settings PORTS]\nCOM1 = \"/none\"\n");
        EVENTS_Open();
        EXPECT_TRUE(STARTUP_Run({}));
        EXPECT_EQ(HEXDATA_GetFits(), c.fits) << c.inSettings << c.inProject;
        const uint16_t shown = HEXDATA_GetChecksum();
        EXPECT_EQ(shown, DEVICE_CalcImageChecksum(!c.fits));
        EXPECT_EQ(PASSWORD_GetLimits().MaxLen, c.fits ? 4U : 8U);
        EXPECT_EQ(STATUS_GetText(STATUS_DEVICE), std::string("MCU: ") + c.inProject);
        STARTUP_Close();
    }
}
