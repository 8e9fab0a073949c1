"""A TCP port server as pyserial makes one: "port_server.py DEVICE" prints the port that it listens on
and serves one connection after the other."""
import socket
import sys
import threading

import serial
import serial.rfc2217

line = serial.serial_for_url(sys.argv[1], timeout=0.005)


class Connection:
    def __init__(self, connected):
        self.socket = connected
        self.lock = threading.Lock()
        self.manager = serial.rfc2217.PortManager(line, self)

    def write(self, data):  # what the manager answers
        with self.lock:
            self.socket.sendall(data)

    def pass_received(self):
        while self.socket.fileno() >= 0:
            data = line.read(line.in_waiting or 1)
            try:
                self.write(b"".join(self.manager.escape(data)))
            except OSError:
                return

    def serve(self):
        threading.Thread(target=self.pass_received, daemon=True).start()
        while data := self.socket.recv(4096):
            line.write(b"".join(self.manager.filter(data)))


listening = socket.create_server(("127.0.0.1", 0))
print(listening.getsockname()[1], flush=True)
while True:
    connected, _ = listening.accept()
    connected.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
    with connected:
        Connection(connected).serve()
