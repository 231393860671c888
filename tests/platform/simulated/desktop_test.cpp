#include "platform/simulated/desktop.h"

#include <gtest/gtest.h>

#include <array>

namespace sonvel::simulated {

TEST(SimulatedProcesses, NameIsCutToFitAndTerminated) {
  SimulatedProcesses processes(42);
  EXPECT_EQ(processes.ownProcessID(), 42);
  processes.setProcess(7, "player");
  std::array<char, 16> name{};
  EXPECT_EQ(processes.procName(7, name), 6);
  EXPECT_STREQ(name.data(), "player");
  name.fill('x');
  EXPECT_EQ(processes.procName(7, std::span(name).first(4)), 3);
  EXPECT_STREQ(name.data(), "pla");
  processes.removeProcess(7);
  EXPECT_LE(processes.procName(7, name), 0);
}

TEST(SimulatedApplications, AreFoundByProcessAndByBundle) {
  SimulatedApplications applications;
  const RunningApplication first{7, "org.example.player", "Player"};
  const RunningApplication second{8, "org.example.player", std::nullopt};
  applications.addApplication(first);
  applications.addApplication(second);
  applications.addApplication({9, std::nullopt, "Other"});
  EXPECT_EQ(applications.runningApplicationsWithBundleIdentifier("org.example.player"),
            (std::vector{first, second}));
  EXPECT_EQ(applications.runningApplicationWithProcessIdentifier(8), second);
  applications.removeApplication(7);
  EXPECT_EQ(applications.runningApplicationWithProcessIdentifier(7), std::nullopt);
  EXPECT_EQ(applications.runningApplicationsWithBundleIdentifier("org.example.player"), std::vector{second});
}

} // namespace sonvel::simulated
