// Events in a log: log4cplus, with a lock file between processes and each event flushed.

#include <log4cplus/fileappender.h>
#include <log4cplus/helpers/property.h>
#include <log4cplus/layout.h>
#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>

#include "event_log_bench.h"
#include "measure.h"

namespace kqbench {
namespace {

log4cplus::Logger make_logger() {
  const std::string path = std::string(std::getenv("TMPDIR")) + "/log4cplus.log";
  unlink(path.c_str());
  log4cplus::helpers::Properties properties;
  properties.setProperty("File", path);
  properties.setProperty("ImmediateFlush", "true");
  properties.setProperty("UseLockFile", "true");
  properties.setProperty("LockFile", path + ".lock");
  log4cplus::SharedAppenderPtr appender(new log4cplus::FileAppender(properties));
  appender->setLayout(std::make_unique<log4cplus::PatternLayout>("%D %p %h %c: %m%n"));
  log4cplus::Logger logger = log4cplus::Logger::getInstance("bench");
  logger.removeAllAppenders();
  logger.addAppender(appender);
  return logger;
}

const bool kAdded = [] {
  add_measurement(kTextEventRow, "log4cplus", kEvents, make_logger,
                  [](const log4cplus::Logger& logger) {
                    for (size_t i = 0; i < kEvents; ++i) {
                      LOG4CPLUS_INFO(logger, kEventDescription);
                    }
                  });
  return true;
}();

}  // namespace
}  // namespace kqbench
