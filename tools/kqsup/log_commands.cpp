// kqsup log show, and kqsup log follow.

#include <signal.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "command.h"
#include "event_reader.h"
#include "log_file.h"
#include "log_filter.h"
#include "log_follower.h"
#include "log_location.h"
#include "log_printer.h"
#include "log_time.h"

namespace kqsup {

namespace {

struct LogArguments {
  std::vector<std::string> files;
  LogFilter filter;
  uint64_t count = 10;
};

void could_not_look(Run& run, const std::string& path, int why) {
  const char* reason = why == EINVAL ? "this is no file" : std::strerror(why);
  run.could_not_look(path + ": " + reason);
}

// The logs that are meant: those that were named, or else this host's. Empty when there are none.
std::vector<std::string> logs_of(const LogArguments& arguments, Run& run) {
  if (!arguments.files.empty()) {
    return arguments.files;
  }
  std::string why;
  std::vector<std::string> logs = default_logs(&why);
  if (logs.empty()) {
    run.could_not_look(why);
  }
  return logs;
}

// ---- show ----

void show_log(LogFile& file, const LogFilter& filter, LogPrinter& printer) {
  EventReader reader(file);
  for (bool is_final = false;;) {
    switch (reader.next(is_final)) {
      case EventReader::Found::kEvent:
        if (filter.wants(reader.event())) {
          printer.print(reader.event());
        }
        break;
      case EventReader::Found::kDamage:
        printer.print(reader.damage());
        break;
      case EventReader::Found::kNothing:
        // What is behind bytes that could not be read may be whole.
        if (is_final || file.error() != 0) {
          return;
        }
        // What looked unfinished may be whole by now.
        reader.look_again();
        is_final = true;
        break;
    }
  }
}

void show(const LogArguments& arguments, Run& run) {
  const std::vector<std::string> logs = logs_of(arguments, run);
  LogPrinter printer(run.as_json ? LogForm::kJsonArray : LogForm::kLines, LogNews::kAtEnd,
                     logs.size() > 1);
  bool has_any = false;
  bool has_complained = false;
  for (const std::string& log : logs) {
    int why = 0;
    auto file = LogFile::open(log, &why);
    if (file) {
      has_any = true;
      printer.set_log(log);
      show_log(*file, arguments.filter, printer);
      why = file->error();
    } else if (arguments.files.empty() && why == ENOENT) {
      why = 0;
    }
    if (why != 0) {
      could_not_look(run, log, why);
      has_complained = true;
    }
  }
  if (!has_any) {
    // Agents that log only to one of this host's logs are well. Without any there is nothing to
    // see.
    if (!has_complained && !logs.empty()) {
      could_not_look(run, logs[0], ENOENT);
    }
    return;
  }
  printer.finish();
  run.tell(printer.damages() != 0 ? Outcome::kFoundWrong : Outcome::kAllRight);
}

// ---- follow ----

volatile sig_atomic_t is_over = 0;

// What whoever started this program has it ignore stays ignored.
void heed_signals() {
  struct sigaction action {};
  action.sa_handler = [](int) { is_over = 1; };
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction old {};
    if (sigaction(signal, nullptr, &old) == 0 && old.sa_handler != SIG_IGN) {
      sigaction(signal, &action, nullptr);
    }
  }
}

struct Followed {
  std::string log;
  std::unique_ptr<LogFollower> follower;
  int told = 0;  // the error that was told, which stands until there is none
};

void follow(const LogArguments& arguments, Run& run) {
  constexpr timespec kPause{0, 20'000'000};
  const std::vector<std::string> logs = logs_of(arguments, run);
  LogPrinter printer(run.as_json ? LogForm::kJsonLines : LogForm::kLines, LogNews::kAtOnce,
                     logs.size() > 1);
  std::vector<Followed> all;
  for (const std::string& log : logs) {
    auto follower = std::make_unique<LogFollower>(log, arguments.filter, printer);
    int why = 0;
    if (follower->start(arguments.count, &why)) {
      all.push_back({log, std::move(follower)});
    } else {
      could_not_look(run, log, why);
    }
  }
  if (all.empty()) {
    return;
  }
  heed_signals();
  while (is_over == 0 && std::ferror(stdout) == 0) {
    for (Followed& each : all) {
      each.follower->poll();
      const int why = each.follower->error();
      if (why != 0 && why != each.told) {
        could_not_look(run, each.log, why);
      }
      each.told = why;
    }
    nanosleep(&kPause, nullptr);
  }
  printer.finish();
  run.tell(printer.damages() != 0 ? Outcome::kFoundWrong : Outcome::kAllRight);
}

// ---- The command line ----

// What the option's values are given to, one by one.
CLI::Option* add_option(CLI::App& command, const char* name, const char* what,
                        std::function<bool(const std::string&)> take) {
  return command
      .add_option(
          name,
          [take = std::move(take)](const CLI::results_t& values) {
            for (const std::string& value : values) {
              if (!take(value)) {
                return false;
              }
            }
            return true;
          },
          what)
      ->type_size(1)
      ->expected(1, CLI::detail::expected_max_vector_size)
      ->allow_extra_args(false);
}

void add_arguments(CLI::App& command, const std::shared_ptr<LogArguments>& arguments) {
  LogFilter& filter = arguments->filter;
  command.add_option("FILE", arguments->files,
                     "A log, or the backup of one; without it the logs of this host");
  add_option(command, "--type", "Only events of this type: a name or a number; may be repeated",
             [&filter](const std::string& text) { return filter.add_type(text); })
      ->type_name("TYPE");
  add_option(command, "--category", "Only events of this category: a name, or 1 to 6",
             [&filter](const std::string& text) { return filter.add_category(text); })
      ->type_name("CATEGORY");
  command.add_option("--source", filter.sources, "Only events of exactly this source")
      ->allow_extra_args(false)
      ->type_name("SOURCE");
  add_option(command, "--id", "Only events of this ID, or of those from FIRST to LAST",
             [&filter](const std::string& text) { return filter.add_id(text); })
      ->type_name("ID|FIRST-LAST");
  const auto moment = [](std::optional<CalendarSeconds>& to) {
    return [&to](const std::string& text) {
      to = parse_moment(text, calendar_now());
      return to.has_value();
    };
  };
  add_option(command, "--since",
             "Only events of this time or later: 2026-11-21, 2026-11-21T12:48, 2h",
             moment(filter.since))
      ->type_name("TIME");
  add_option(command, "--until", "Only events of this time or earlier", moment(filter.until))
      ->type_name("TIME");
}

}  // namespace

void add_log_commands(CLI::App& app, Run& run) {
  CLI::App* log = app.add_subcommand("log", "Look at the event logs, the text log and the XML log");
  log->require_subcommand(1);
  log->footer("Example:\n  kqsup log show --type error --since 1d");

  const auto shown = std::make_shared<LogArguments>();
  CLI::App* show_command = log->add_subcommand("show", "Print the events of logs");
  add_arguments(*show_command, shown);
  show_command->footer(
      "Example: the errors and warnings of one agent since this time yesterday\n"
      "  kqsup log show --type error --type warning --source inventory --since 1d");
  show_command->callback([shown, &run] { show(*shown, run); });

  const auto followed = std::make_shared<LogArguments>();
  CLI::App* follow_command =
      log->add_subcommand("follow", "Print the last events of logs, and each one that comes");
  add_arguments(*follow_command, followed);
  follow_command->add_option("-n", followed->count, "How many events to begin with")
      ->type_name("COUNT")
      ->capture_default_str();
  follow_command->footer(
      "Goes on until it is interrupted. Logs may become their backups meanwhile, be cleared, or "
      "not\n"
      "be there yet.\n"
      "Example: what comes from now on, for another program\n"
      "  kqsup log follow -n 0 --json /opt/agents/log/log/kqsys32.log");
  follow_command->callback([followed, &run] { follow(*followed, run); });
}

}  // namespace kqsup
