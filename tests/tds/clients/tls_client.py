"""TLS in PRELOGIN packets with Python's ssl module: tls_client.py PORT CA_FILE TLS_VERSION [CUT]

Prints the protocol that was negotiated. CUT: closes the connection after its first TLS message.
"""
import socket
import ssl
import struct
import sys

port, ca_file, version = int(sys.argv[1]), sys.argv[2], sys.argv[3]
context = ssl.create_default_context(cafile=ca_file)
context.set_ciphers("ALL:@SECLEVEL=0")  # TLS 1.1 needs it
context.minimum_version = context.maximum_version = getattr(ssl.TLSVersion, version)
received, output = ssl.MemoryBIO(), ssl.MemoryBIO()
tls = context.wrap_bio(received, output, server_hostname="localhost")
connection = socket.create_connection(("localhost", port), timeout=30)


def send(body):
    connection.sendall(struct.pack(">BBHHBB", 0x12, 1, len(body) + 8, 0, 1, 0) + body)


def receive():
    header = connection.recv(8, socket.MSG_WAITALL)
    if len(header) < 8:
        sys.exit("closed")
    return connection.recv(struct.unpack(">H", header[2:4])[0] - 8, socket.MSG_WAITALL)


ENCRYPT_ON = 1
send(bytes([0, 0, 11, 0, 6, 1, 0, 17, 0, 1, 0xFF]) + bytes(6) + bytes([ENCRYPT_ON]))
receive()
done = False
while not done:
    try:
        tls.do_handshake()
        done = True
    except ssl.SSLWantReadError:
        pass
    if output.pending:
        send(output.read())
        if len(sys.argv) > 4:
            sys.exit()
    if not done:
        received.write(receive())
print(tls.version())
