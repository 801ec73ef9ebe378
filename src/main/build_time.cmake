# Writes the header ${OUTPUT} with the time of the build: that of SOURCE_DATE_EPOCH (in UTC) if the
# environment has it, for builds that can be repeated, otherwise the local time.
if(DEFINED ENV{SOURCE_DATE_EPOCH})
  set(zone UTC)
endif()
string(TIMESTAMP time "%H:%M:%S" ${zone})
string(TIMESTAMP month "%b" ${zone})
string(TIMESTAMP day "%d" ${zone})
string(TIMESTAMP year "%Y" ${zone})
string(REGEX REPLACE "^0" " " day "${day}")
file(WRITE "${OUTPUT}" "#pragma once

namespace mediasplit {

inline constexpr const char* kBuildTime = \"${time}\";
inline constexpr const char* kBuildDate = \"${month} ${day} ${year}\";

}  // namespace mediasplit
")
