#pragma once

#include <string>
#include <string_view>

namespace Corvella {

/// The lyrics without what an LRC file tells machines: time stamps at the start of a line
/// ([mm:ss], [mm:ss.xx], [mm:ss.xxx], [mm:ss:xx]), time stamps of words (<mm:ss.xx>) and lines that
/// describe the file ([ar:...], [offset:...]). A text without any time stamp stays as it is, save
/// for a byte order mark. Takes linear time; any thread.
std::string withoutTimeStamps(std::string_view text);

/// Whether the text shows nothing: it has blanks and line ends only.
bool isBlank(std::string_view text);

}  // namespace Corvella
