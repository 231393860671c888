// The Qt application object of the tests without views.

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QLocale>
#include <array>
#include <memory>
#include <optional>
#include <string>

namespace sonvel {
namespace {

/// The application object for the event loop, and a locale with a known sort order.
class QtEnvironment final : public testing::Environment {
 public:
  void SetUp() override {
    QLocale::setDefault(QLocale("en_US"));
    application_.emplace(argumentCount_, arguments_.data());
  }

  void TearDown() override { application_.reset(); }

 private:
  std::string name_ = "model_test";
  std::array<char*, 2> arguments_{name_.data(), nullptr};
  int argumentCount_ = 1;
  std::optional<QCoreApplication> application_;
};

const auto* const kQtEnvironment =
    testing::AddGlobalTestEnvironment(std::make_unique<QtEnvironment>().release());

} // namespace
} // namespace sonvel
