#pragma once

#include <map>
#include <string>
#include <string_view>

namespace fernhollow {

/// Writes the lines of one engine to the debug log, each of which begins with "[CloudSync] ".
///
/// Each is one line, whatever a backend or a name puts into it. A line that comes with every cycle is
/// written when it differs from the last one on the same topic: a cycle each second would fill the disk
/// with what is known.
class SyncLog {
public:
    static void write(std::string_view message);

    /// Writes the message unless it, with the same `content`, is the last one on this topic.
    void writeChange(std::string_view topic, const std::string& message, const std::string& content = {});
    /// The next message on this topic is written, whatever it is: the last one is over.
    void clear(std::string_view topic);

private:
    std::map<std::string, std::string, std::less<>> last_; // by topic
};

} // namespace fernhollow
