#pragma once

#include "collector/PluggingSession.h"

#include <deque>
#include <iosfwd>
#include <string>

namespace korvane {

// `korvane map` between the plugging session and the terminal: each socket
// seen is a "Seen: " line and a prompt, and each line of input answers the
// oldest prompt. Lines that come before a prompt (a script writing ahead)
// wait for the next one. Main thread only.
class MapDialogue {
  public:
    MapDialogue(PluggingSession& plugging, std::ostream& out);

    // The controllers, the budget and the line that begins with "Plug ".
    void begin();
    // One line of standard input, without its line end.
    void line(const std::string& text);
    // End of input: the map saved and the summary. False when the map could
    // not be saved.
    bool end(const std::string& savedWhere);

  private:
    void answerWaiting();
    void prompt();

    PluggingSession& plugging_;
    std::ostream& out_;
    std::deque<std::string> input_;
};

} // namespace korvane
