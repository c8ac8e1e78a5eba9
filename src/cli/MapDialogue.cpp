#include "cli/MapDialogue.h"

#include <ostream>

namespace korvane {

MapDialogue::MapDialogue(PluggingSession& plugging, std::ostream& out) : plugging_(plugging), out_(out) {
    plugging_.onSighting = [this](const PlugSighting& sighting) {
        out_ << sighting.text << '\n';
        if (sighting.asksName) {
            prompt();
            answerWaiting();
        } else {
            out_ << plugging_.progressText() << '\n' << std::flush;
        }
    };
}

void MapDialogue::begin() {
    for (const auto& text : plugging_.startLines()) {
        out_ << text << '\n';
    }
    out_ << "Give each socket's name when asked (an empty line: none; an earlier socket's name: the same "
            "socket). End of input (Ctrl-D) ends the session.\n"
         << std::flush;
}

void MapDialogue::prompt() {
    out_ << "Name: " << std::flush;
}

void MapDialogue::line(const std::string& text) {
    input_.push_back(text);
    answerWaiting();
}

void MapDialogue::answerWaiting() {
    while (plugging_.isAwaitingName() && !input_.empty()) {
        const std::string text = input_.front();
        input_.pop_front();
        out_ << plugging_.nameSocket(text) << '\n';
        if (plugging_.isAwaitingName()) {
            prompt();
        } else {
            out_ << plugging_.progressText() << '\n' << std::flush;
        }
    }
}

bool MapDialogue::end(const std::string& savedWhere) {
    if (plugging_.isAwaitingName()) {
        out_ << '\n';
    }
    // The internal candidates are only offered: a keyboard left in a socket
    // all along looks the same, and typing it internal would hide the socket.
    const MapOutcome saved = plugging_.save();
    out_ << (saved.succeeded ? "Map saved to " + savedWhere + "." : saved.summary) << '\n';
    for (const auto& text : plugging_.summaryLines()) {
        out_ << text << '\n';
    }
    out_ << std::flush;
    return saved.succeeded;
}

} // namespace korvane
