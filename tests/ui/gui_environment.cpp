#include <gtest/gtest.h>

#include <QGuiApplication>
#include <memory>
#include <optional>

namespace sonvel {
namespace {

/// The one application of a test program, without a display. It ends before Qt's own statics do.
class GuiEnvironment final : public testing::Environment {
 public:
  void SetUp() override {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    application_.emplace(count_, arguments_);
  }

  void TearDown() override { application_.reset(); }

 private:
  int count_ = 0;
  char* arguments_[1] = {nullptr};
  std::optional<QGuiApplication> application_;
};

const auto* const kEnvironment =
    testing::AddGlobalTestEnvironment(std::make_unique<GuiEnvironment>().release());

} // namespace
} // namespace sonvel
