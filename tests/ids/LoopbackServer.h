#pragma once

#include <chrono>
#include <httplib.h>
#include <string>
#include <thread>

namespace korvane {

// A web server on 127.0.0.1 for the download tests, on a port of its own
// choosing; it stops when the test ends.
class LoopbackServer {
  public:
    LoopbackServer() {
        port_ = server.bind_to_any_port("127.0.0.1");
        thread_ = std::thread([this] { server.listen_after_bind(); });
        // The listening socket is bound already, so connections queue even
        // before the thread reaches its loop; this only keeps stop() safe.
        for (int i = 0; i < 1000 && !server.is_running(); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    ~LoopbackServer() {
        server.stop();
        thread_.join();
    }

    std::string address(const std::string& path) const {
        return "http://127.0.0.1:" + std::to_string(port_) + path;
    }

    httplib::Server server;

  private:
    int port_ = 0;
    std::thread thread_;
};

} // namespace korvane
