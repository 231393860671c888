#include "updater/default_application.h"

#include <gio/gio.h>

#include <memory>

namespace sonvel::updater {
namespace {

struct Release {
  void operator()(gpointer object) const { g_object_unref(object); }

  void operator()(char* text) const { g_free(text); }
};

} // namespace

bool openWithDefaultApplication(const std::filesystem::path& file) {
  const std::unique_ptr<char, Release> type(g_content_type_guess(file.c_str(), nullptr, 0, nullptr));
  const std::unique_ptr<GAppInfo, Release> application(
      type ? g_app_info_get_default_for_type(type.get(), FALSE) : nullptr);
  if (!application) return false;
  const std::unique_ptr<GFile, Release> opened(g_file_new_for_path(file.c_str()));
  GList files{.data = opened.get(), .next = nullptr, .prev = nullptr};
  return g_app_info_launch(application.get(), &files, nullptr, nullptr) != FALSE;
}

} // namespace sonvel::updater
