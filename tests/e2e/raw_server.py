"""A server on 127.0.0.1 whose answers a test writes byte by byte."""

import socket
import threading


class RawServer:
    """Answers each path by a function that gets the connection; a path without one is answered by its bytes."""

    def __init__(self):
        self.answers = {}
        self.listener = socket.create_server(("127.0.0.1", 0), backlog=600)
        self.waiting = threading.Event()  # set once a request is held back
        self.release = threading.Event()
        threading.Thread(target=self.accept, daemon=True).start()

    def accept(self):
        while True:
            try:
                connection, _ = self.listener.accept()
            except OSError:
                return
            threading.Thread(target=self.serve, args=(connection,), daemon=True).start()

    def serve(self, connection):
        with connection:
            request = b""
            while b"\r\n\r\n" not in request:
                piece = connection.recv(4096)
                if not piece:
                    return
                request += piece
            answer = self.answers.get(request.split()[1].decode(), b"")
            try:
                if callable(answer):
                    answer(connection)
                else:
                    connection.sendall(self.head(len(answer)) + answer)
            except OSError:
                pass  # the program went away

    @staticmethod
    def head(length):
        told = b"" if length is None else b"Content-Length: %d\r\n" % length
        return b"HTTP/1.1 200 OK\r\n" + told + b"Connection: close\r\n\r\n"

    def hold(self, beginning=b"", told=None):
        """Sends a beginning and then nothing until the test lets go."""
        def answer(connection):
            connection.sendall(self.head(told) + beginning)
            self.waiting.set()
            self.release.wait(60)
        return answer

    def url(self, path):
        return "http://127.0.0.1:%d%s" % (self.listener.getsockname()[1], path)

    def close(self):
        self.release.set()
        self.listener.close()
