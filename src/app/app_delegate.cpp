#include "app/app_delegate.h"

namespace sonvel {

AppDelegate::AppDelegate(MixerDependencies dependencies)
    : mainThread_(dependencies.mainThread)
    , model_(std::make_shared<MixerViewModel>(std::move(dependencies))) {}

TerminateReply AppDelegate::applicationShouldTerminate(TerminatingApplication& sender) {
  if (!std::exchange(isTerminating_, true))
    startTask(mainThread_, [self = shared_from_this(), &sender]() -> QCoro::Task<> {
      co_await self->model_->teardownForQuit();
      sender.replyToApplicationShouldTerminate(true);
    });
  return TerminateReply::later;
}

} // namespace sonvel
