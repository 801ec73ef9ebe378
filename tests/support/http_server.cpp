#include "tests/support/http_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <string_view>

namespace mediasplit {
namespace {

constexpr int kPollMilliseconds = 20;

bool wait_for_input(int descriptor) {
    pollfd waiting{descriptor, POLLIN, 0};
    return ::poll(&waiting, 1, kPollMilliseconds) > 0;
}

void send_all(int connection, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = ::send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0) {
            return;
        }
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
}

std::string head_of(const HttpReply& reply) {
    std::string head = "HTTP/1.1 " + std::to_string(reply.status) + " Reply\r\n";
    if (!reply.location.empty()) {
        head += "Location: " + reply.location + "\r\n";
    }
    const std::size_t length = reply.body.size() + (reply.stall ? 1 : 0);
    return head + "Content-Length: " + std::to_string(length) + "\r\nConnection: close\r\n\r\n";
}

}  // namespace

HttpServer::HttpServer() {
    listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    if (::bind(listener_, generic, size) == 0 && ::listen(listener_, 64) == 0 &&
        ::getsockname(listener_, generic, &size) == 0) {
        port_ = ntohs(address.sin_port);
    }
    acceptor_ = std::thread([this] { accept_loop(); });
}

HttpServer::~HttpServer() {
    stopping_ = true;
    acceptor_.join();
    for (std::thread& worker : workers_) {
        worker.join();
    }
    ::close(listener_);
}

std::string HttpServer::url(const std::string& path) const {
    return "http://127.0.0.1:" + std::to_string(port_) + path;
}

void HttpServer::serve(const std::string& path, std::vector<HttpReply> replies) {
    const std::lock_guard lock(mutex_);
    std::reverse(replies.begin(), replies.end());
    replies_[path] = std::move(replies);
}

void HttpServer::serve(const std::string& path, const std::string& body) {
    HttpReply reply;
    reply.body = body;
    serve(path, std::vector<HttpReply>{reply});
}

std::size_t HttpServer::requests(const std::string& path) const {
    const std::lock_guard lock(mutex_);
    const auto found = requests_.find(path);
    return found == requests_.end() ? 0 : found->second;
}

HttpReply HttpServer::next_reply(const std::string& path) {
    const std::lock_guard lock(mutex_);
    ++requests_[path];
    const auto found = replies_.find(path);
    if (found == replies_.end() || found->second.empty()) {
        HttpReply missing;
        missing.status = 404;
        missing.body = "not here";
        return missing;
    }
    HttpReply reply = found->second.back();
    if (found->second.size() > 1) {
        found->second.pop_back();
    }
    return reply;
}

void HttpServer::accept_loop() {
    while (!stopping_) {
        if (!wait_for_input(listener_)) {
            continue;
        }
        const int connection = ::accept(listener_, nullptr, nullptr);
        if (connection >= 0) {
            workers_.emplace_back([this, connection] {
                answer(connection);
                ::close(connection);
            });
        }
    }
}

void HttpServer::answer(int connection) {
    std::string request;
    while (request.find("\r\n\r\n") == std::string::npos) {
        char bytes[4096];
        const ssize_t got = ::recv(connection, bytes, sizeof(bytes), 0);
        if (got <= 0) {
            return;
        }
        request.append(bytes, static_cast<std::size_t>(got));
    }
    const std::size_t begin = request.find(' ') + 1;
    const HttpReply reply = next_reply(request.substr(begin, request.find(' ', begin) - begin));
    if (reply.on_request) {
        reply.on_request();
    }
    send_all(connection, head_of(reply));
    send_all(connection,
             std::string_view(reply.body).substr(0, reply.close_after.value_or(std::string::npos)));
    while (reply.stall && !stopping_ && !wait_for_input(connection)) {
    }
}

}  // namespace mediasplit
