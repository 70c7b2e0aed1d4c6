// Runs a command line that makes pictures of pictures.
#pragma once

#include "kit/commands/command.h"
#include "kit/guidance/manner.h"
#include "kit/work/picture_work.h"
#include "kit/work/reported.h"
#include "kit/work/settings_text.h"

namespace norv {

// Throws as MakePicture() does; with --json the picture's row is said, whether it was made or not.
void RunWork(const WorkOrder& order);

// A command whose Settings have a WorkChoice `choice` and whose work is described by `work`, which may settle what the
// options leave open.
template <typename Settings>
Command MakeWorkCommand(const CommandText& text, Options (*rows)(Settings&), PictureWork (*work)(Settings&)) {
  const auto settings = std::make_shared<Settings>();
  const auto run = [settings, rows, work, name = std::string(text.name)] {
    settings->choice.threads = RunManner().threads;
    WorkOrder order{work(*settings), settings->choice, {name}};
    Settings untouched;
    const std::vector<std::string> words = SettingsWords(rows(*settings), rows(untouched));
    order.settings.insert(order.settings.end(), words.begin(), words.end());
    RunReported(std::move(order));
  };
  return {text, WithMannerRows(rows(*settings)), run, true};
}

}  // namespace norv
