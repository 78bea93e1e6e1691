#!/usr/bin/env python3
"""A misbehaving TORV-NET card on loopback, apart from the simulator: for trying the panel by
hand the way a technician meets a broken card. One mode for the whole run:

  slow       answers each request after --delay ms
  silent     reads the request and never answers (connection held)
  garbage    answers bytes that are no answer, then closes
  huge       answers an opening tag and then --size MiB without the closing tag
  close      accepts and closes at once
  half       sends the first 60 bytes of the answer, then silence (connection held)
  badvalue   answers a status whose OUT_STATUS is 40000 (a run-time error in the panel)
  once       answers like slow with no delay until its first status answer, then reads every
             later request and never answers (connection held): a card that stops mid-session

With --log FILE every connection, request, answer and close is written there with its time in
seconds since the card started; a connection the panel closes after holding a request open is
where its "no answer" box came up.

Usage: bad_card.py MODE [--port 8090] [--delay 3000] [--size 100] [--seconds 120] [--log FILE]
The card stops by itself after --seconds, or at Ctrl-C or SIGTERM (the log is written then too).
"""
import argparse
import signal
import socket
import threading
import time

START = time.time()
LOG_LOCK = threading.Lock()
LOG = []
ANSWERED = []


def log(args, text):
    if not args.log:
        return
    with LOG_LOCK:
        LOG.append("%8.3f %s" % (time.time() - START, text))

STATUS = ("<GetRTStatus><WEIGHT>12.345</WEIGHT><A2D>49380</A2D><OUT_STATUS>{out}</OUT_STATUS>"
          "<IN_STATUS>255</IN_STATUS><INTEGRATION>8</INTEGRATION><MAXIMUM_LOAD>3000</MAXIMUM_LOAD>"
          "<UNIT>KG</UNIT><SP_STATUS>0</SP_STATUS><ERROR_CODE>0</ERROR_CODE>"
          "<ERROR_DESCRIPTION>OK</ERROR_DESCRIPTION></GetRTStatus>")
HEAD = b"HTTP/1.0 200 OK\r\nContent-Type: text/xml\r\n\r\n"


def read_request(conn):
    """Reads one request (request line, header, body line); returns the function name."""
    data = b""
    while True:
        head = data.find(b"\r\n\r\n")
        if head >= 0 and data.find(b"\r\n", head + 4) >= 0:
            break
        chunk = conn.recv(4096)
        if not chunk:
            return None
        data += chunk
    line = data.split(b"\r\n", 1)[0]
    return line[len(b"POST /"):].decode("latin-1") if line.startswith(b"POST /") else "?"


def answer_for(name, out="16383"):
    if name == "GetRTStatus":
        body = STATUS.format(out=out)
    else:
        body = "<{0}><ERROR_CODE>0</ERROR_CODE><ERROR_DESCRIPTION>OK</ERROR_DESCRIPTION></{0}>".format(name)
    return HEAD + body.encode()


def serve(conn, args, stop, number=0):
    try:
        conn.settimeout(1.0)
        if args.mode == "close":
            return
        name = None
        while name is None and not stop.is_set():
            try:
                name = read_request(conn)
                break
            except socket.timeout:
                continue
        if name is None:
            log(args, "#%d closed by the panel before a request" % number)
            return
        log(args, "#%d request %s" % (number, name))
        if args.mode == "once":
            with LOG_LOCK:
                answer = not ANSWERED
                if name == "GetRTStatus":
                    ANSWERED.append(number)
            if answer:
                conn.sendall(answer_for(name))
                log(args, "#%d answered, card closes" % number)
                return
        if args.mode == "slow":
            time.sleep(args.delay / 1000.0)
            conn.sendall(answer_for(name))
        elif args.mode == "garbage":
            conn.sendall(bytes((i * 37 + 11) % 256 for i in range(300)).replace(b"/", b"x"))
        elif args.mode == "huge":
            conn.sendall(HEAD + ("<%s>" % name).encode())
            piece = b"x" * 65536
            for _ in range(args.size * 16):
                if stop.is_set():
                    break
                conn.sendall(piece)
        elif args.mode == "half":
            conn.sendall(answer_for(name)[:60])
        elif args.mode == "badvalue":
            conn.sendall(answer_for(name, out="40000"))
        if args.mode in ("silent", "half", "once"):
            while not stop.is_set():  # hold the connection
                try:
                    if not conn.recv(4096):
                        log(args, "#%d closed by the panel" % number)
                        break
                except socket.timeout:
                    pass
    except OSError:
        pass
    finally:
        conn.close()


def main():
    p = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    p.add_argument("mode", choices=["slow", "silent", "garbage", "huge", "close", "half", "badvalue", "once"])
    p.add_argument("--port", type=int, default=8090)
    p.add_argument("--delay", type=int, default=3000)
    p.add_argument("--size", type=int, default=100)
    p.add_argument("--seconds", type=float, default=120)
    p.add_argument("--log", help="file for the card's log of connections and requests")
    args = p.parse_args()
    stop = threading.Event()
    server = socket.socket()
    server.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
    server.bind(("127.0.0.1", args.port))
    server.listen(64)
    server.settimeout(0.5)
    end = time.time() + args.seconds
    connections = 0
    # Ctrl-C or a kill ends the run early like --seconds does, the log still written.
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    try:
        while time.time() < end:
            try:
                conn, _ = server.accept()
            except socket.timeout:
                continue
            connections += 1
            log(args, "#%d connection" % connections)
            threading.Thread(target=serve, args=(conn, args, stop, connections), daemon=True).start()
    except KeyboardInterrupt:
        log(args, "stopped by a signal")
    stop.set()
    server.close()
    if args.log:
        time.sleep(1.2)  # the serving threads notice the stop
        with LOG_LOCK, open(args.log, "w") as f:
            f.write("# started %.3f (epoch seconds)\n" % START)
            f.write("\n".join(LOG + ["%d connections" % connections]) + "\n")
    print("bad_card %s: %d connections" % (args.mode, connections))


if __name__ == "__main__":
    main()
