"""nginx over a folder on 127.0.0.1, with and without TLS."""

import os
import shutil
import socket
import subprocess
import time

# Where the path of a user who isn't root doesn't lead.
NGINX = shutil.which("nginx", path=os.environ.get("PATH", os.defpath) + ":/usr/sbin") or "nginx"

CONFIGURATION = """
daemon off; worker_processes 1; pid %(folder)s/nginx.pid; error_log %(folder)s/error.log;
events { worker_connections 512; }
http {
  access_log %(folder)s/access.log; root %(root)s; client_body_temp_path %(folder)s/b; proxy_temp_path %(folder)s/p;
  fastcgi_temp_path %(folder)s/f; uwsgi_temp_path %(folder)s/u; scgi_temp_path %(folder)s/s;
  server { listen 127.0.0.1:%(plain)d; location /moved/ { rewrite ^/moved/(.*)$ /$1 redirect; }
           location /hop/ { rewrite ^/hop/a(a+)/(.*)$ /hop/$1/$2 redirect; rewrite ^/hop/a/(.*)$ /$1 redirect; } }
  server { listen 127.0.0.1:%(secure)d ssl; ssl_certificate %(folder)s/certificate.pem;
           ssl_certificate_key %(folder)s/key.pem; }
}
"""


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class NginxServer:
    """Needs a folder of its own for what nginx writes."""

    def __init__(self, root, folder):
        self.folder = folder
        self.plain, self.secure = free_port(), free_port()
        os.mkdir(folder)
        subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj", "/CN=127.0.0.1",
                        "-addext", "subjectAltName=IP:127.0.0.1", "-keyout", folder + "/key.pem", "-out",
                        folder + "/certificate.pem"], check=True, capture_output=True, timeout=60)
        os.chmod(folder, 0o755)
        with open(folder + "/nginx.conf", "w") as file:
            file.write(CONFIGURATION % {"folder": folder, "root": root, "plain": self.plain, "secure": self.secure})
        self.process = subprocess.Popen([NGINX, "-e", folder + "/error.log", "-c", folder + "/nginx.conf"],
                                        stdin=subprocess.DEVNULL)
        for _ in range(100):
            try:
                socket.create_connection(("127.0.0.1", self.secure), 1).close()
                return
            except OSError:
                time.sleep(0.05)
        self.stop()
        raise AssertionError("nginx didn't start")

    # An address below "hop/aa.../" is redirected as often as there are letters.

    def url(self, name, secure=False):
        return "%s://127.0.0.1:%d/%s" % ("https" if secure else "http", self.secure if secure else self.plain, name)

    def stop(self):
        self.process.terminate()
        self.process.wait(30)
