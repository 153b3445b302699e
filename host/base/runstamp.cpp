#include "host/base/runstamp.h"

#include <fmt/format.h>

#include <boost/uuid/random_generator.hpp>
#include <boost/uuid/uuid_io.hpp>
#include <chrono>
#include <cstdlib>
#include <ctime>

namespace velhost {

using std::chrono::minutes;
using std::chrono::system_clock;

std::string NewUuid() { return boost::uuids::to_string(boost::uuids::random_generator()()); }

std::string WallTimeText(system_clock::time_point time, minutes offset) {
  const auto local = std::chrono::floor<std::chrono::milliseconds>(time) + offset;
  const auto day = std::chrono::floor<std::chrono::days>(local);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(local - day);
  const auto distance = std::abs(offset.count());
  return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:03}{}{:02}:{:02}", static_cast<int>(date.year()),
                     static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()), clock.hours().count(),
                     clock.minutes().count(), clock.seconds().count(), clock.subseconds().count(),
                     offset < minutes(0) ? '-' : '+', distance / 60, distance % 60);
}

std::string LocalWallTimeText(system_clock::time_point time) {
  const std::time_t seconds = system_clock::to_time_t(time);
  std::tm local{};
  localtime_r(&seconds, &local);
  return WallTimeText(time, std::chrono::duration_cast<minutes>(std::chrono::seconds(local.tm_gmtoff)));
}

}  // namespace velhost
