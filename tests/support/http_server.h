#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace mediasplit {

/// What a server answers to one request.
struct HttpReply {
    int status = 200;
    std::string body{};
    std::string location{};                    ///< for redirects
    std::optional<std::size_t> close_after{};  ///< bytes of the body sent before it hangs up
    bool stall = false;                        ///< sends no more once the body is out
    std::function<void()> on_request{};        ///< called ahead of the answer
};

/// A small HTTP/1.1 server on 127.0.0.1 for tests, one connection after the other per thread. A
/// path without a reply is answered with 404.
class HttpServer {
public:
    HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;
    ~HttpServer();

    [[nodiscard]] std::string url(const std::string& path) const;
    /// Answers to the requests for `path` in turn; the last one stays.
    void serve(const std::string& path, std::vector<HttpReply> replies);
    void serve(const std::string& path, const std::string& body);
    [[nodiscard]] std::size_t requests(const std::string& path) const;

private:
    void accept_loop();
    void answer(int connection);
    HttpReply next_reply(const std::string& path);

    int listener_ = -1;
    std::uint16_t port_ = 0;
    std::atomic<bool> stopping_{false};
    mutable std::mutex mutex_;
    std::map<std::string, std::vector<HttpReply>> replies_;
    std::map<std::string, std::size_t> requests_;
    std::vector<std::thread> workers_;
    std::thread acceptor_;
};

}  // namespace mediasplit
