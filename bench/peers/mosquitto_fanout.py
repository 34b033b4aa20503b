"""mosquitto as a server of many clients, for `fanout`: the same texts, published at quality of service 0."""

import os
import socket
import subprocess
import sys
import tempfile
import time


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def publish(text):
    body = b"\x00\x01t" + text
    length, size = b"", len(body)
    while True:
        length += bytes([size % 128 | (128 if size > 127 else 0)])
        size //= 128
        if size == 0:
            return b"\x30" + length + body


def connect(port):
    for _ in range(200):
        try:
            link = socket.create_connection(("127.0.0.1", port))
            break
        except ConnectionRefusedError:
            time.sleep(0.05)
    else:
        sys.exit("mosquitto does not listen")
    link.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
    link.sendall(b"\x10\x0d\x00\x04MQTT\x04\x02\x00\x00\x00\x01p")
    link.recv(4, socket.MSG_WAITALL)
    return link


def main():
    port = free_port()
    with tempfile.TemporaryDirectory() as folder:
        settings = os.path.join(folder, "mosquitto.conf")
        with open(settings, "w", encoding="ascii") as file:
            file.write(f"listener {port} 127.0.0.1\nallow_anonymous true\nset_tcp_nodelay true\n"
                       "max_queued_messages 0\nlog_type none\nuser root\n")
        broker = subprocess.Popen(["mosquitto", "-c", settings], stdin=subprocess.DEVNULL, stdout=sys.stderr)
        try:
            link = connect(port)
            print("ready mqtt", port, broker.pid, flush=True)
            for line in sys.stdin:
                texts = (b"LOG!%020d %%Read from port%% $01AR12345678&" % time.monotonic_ns()
                         for _ in range(int(line)))
                link.sendall(b"".join(map(publish, texts)))
        finally:
            broker.terminate()
            broker.wait()


if __name__ == "__main__":
    main()
