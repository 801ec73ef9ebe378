"""A server on 127.0.0.1 that answers each path as a test wants it."""

import http.server
import os
import ssl
import threading


class ScriptedServer:
    """Serves the files of a folder; `script` holds the answers of single paths, used up in turn, the last one staying.

    An answer is bytes, a status, ("redirect", address) or ("close", bytes): the first half of the bytes and an end.
    """

    def __init__(self, folder):
        self.folder = folder
        self.script = {}
        self.requests = []
        server = self

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                server.requests.append(self.path)
                answer = server.answer(self.path)
                if isinstance(answer, int):
                    self.send_error(answer)
                elif isinstance(answer, tuple) and answer[0] == "redirect":
                    self.send_response(302)
                    self.send_header("Location", answer[1])
                    self.send_header("Content-Length", "0")
                    self.end_headers()
                else:
                    body = answer[1] if isinstance(answer, tuple) else answer
                    self.send_response(200)
                    self.send_header("Content-Length", str(len(body)))
                    self.end_headers()
                    self.wfile.write(body[:len(body) // 2] if isinstance(answer, tuple) else body)

            def log_message(self, *words):
                pass

        self.http = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self.thread = threading.Thread(target=self.http.serve_forever, args=(0.02,), daemon=True)

    def answer(self, path):
        answers = self.script.get(path)
        if answers:
            return answers.pop(0) if len(answers) > 1 else answers[0]
        name = os.path.join(self.folder, path.lstrip("/"))
        if not os.path.isfile(name):
            return 404
        with open(name, "rb") as file:
            return file.read()

    def url(self, path):
        return "%s://127.0.0.1:%d%s" % (self.scheme, self.http.server_address[1], path)

    scheme = "http"

    def use_tls(self, certificate, key):
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(certificate, key)
        self.http.socket = context.wrap_socket(self.http.socket, server_side=True)
        self.scheme = "https"

    def __enter__(self):
        self.thread.start()
        return self

    def __exit__(self, *unused):
        self.http.shutdown()
        self.http.server_close()
        self.thread.join()
