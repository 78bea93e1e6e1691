#!/usr/bin/env python3
"""Writes the seed corpora of the fuzz targets into corpus/TARGET/seed-*.

The seeds come from the card simulator's real answers (seeds/answers/, captured from
torv-sim over TCP), the project's own file layouts and the hostile cases of the tests. Inputs
that once found a fault are kept beside them as corpus/TARGET/fault-*; this script never
touches those. Run it again after changing a target's input layout.
"""
import os
import struct
from pathlib import Path

HERE = Path(__file__).resolve().parent
ANSWERS = HERE / "seeds" / "answers"
CORPUS = HERE / "corpus"

FUNCTIONS = ["GetRTStatus", "GetFastSampling", "StartSample", "StopSample", "ch1_switch",
             "ch2_switch", "SetOutput", "GetSetpoints", "SetSetpoints", "SetD2A",
             "SetIntegration"]


def answers():
    """(name, function, whole answer with the HTTP head, tagged body alone)."""
    for path in sorted(ANSWERS.iterdir()):
        raw = path.read_bytes()
        function = path.name.split("_", 2)[2]
        head, _, body = raw.partition(b"\r\n\r\n")
        yield path.name, function, raw, body


def write(target, name, data):
    folder = CORPUS / target
    folder.mkdir(parents=True, exist_ok=True)
    for old in folder.glob("seed-" + name):
        old.unlink()
    (folder / ("seed-" + name)).write_bytes(data)


def clear_seeds(target):
    folder = CORPUS / target
    if folder.exists():
        for old in folder.glob("seed-*"):
            old.unlink()


# The clicks that make the panel ask for each function (see operatorAction).
CLICKS = {
    "GetRTStatus": [0x00],
    "GetFastSampling": [0x07],
    "StartSample": [0x07],
    "StopSample": [0x07, 0x08],
    "ch1_switch": [0x15, 0x05],
    "ch2_switch": [0x15],
    "SetOutput": [0x00, 0x21],
    "GetSetpoints": [0x00, 0x02],
    "SetSetpoints": [0x00, 0x02, 0x0B],
    "SetD2A": [0x00, 0x73],
    "SetIntegration": [0x00, 0x14],
}

READINGS = b"".join(b"<W%d>%d.%03d</W%d>" % (i, 10 + i % 3, (i * 37) % 1000, i)
                    for i in range(12))
FAST = (b"<GetFastSampling><ERROR_CODE>0</ERROR_CODE><ERROR_DESCRIPTION>OK"
        b"</ERROR_DESCRIPTION>" + READINGS + b"</GetFastSampling>")
# Hostile answers of the tests: a reading with no closing tag, numbers out of order, a long
# reading, a last number that is no number, a block announced far beyond the list.
FAST_HOSTILE = [
    FAST.replace(b"</W3>", b""),
    FAST.replace(b"<W2>", b"<W9>", 1),
    FAST.replace(b"<W4>10.148", b"<W4>123456789012.5"),
    FAST.replace(b"</W11>", b"</Wx>"),
    FAST.replace(b"<W11>", b"<W99999>").replace(b"</W11>", b"</W99999>"),
    FAST.replace(b"<W5>11.185", b"<W5>ERROR"),
    b"<GetFastSampling><ERROR_CODE>200</ERROR_CODE><ERROR_DESCRIPTION>Fast sampling stopped"
    b"</ERROR_DESCRIPTION></GetFastSampling>",
]


def panel_answer():
    clear_seeds("panel_answer")
    for name, function, raw, body in answers():
        if function not in FUNCTIONS:
            continue
        clicks = CLICKS[function]
        head = bytes([FUNCTIONS.index(function), 0, len(clicks)] + clicks)
        write("panel_answer", name, head + body)
    fast = FUNCTIONS.index("GetFastSampling")
    for i, answer in enumerate(FAST_HOSTILE + [FAST]):
        for flags in (0, 4):  # the abnormal reading kept or refused
            write("panel_answer", "fast-%d-%d" % (i, flags),
                  bytes([fast, flags, 1, 0x07]) + answer)
    status = FUNCTIONS.index("GetRTStatus")
    for i, inner in enumerate([b"<WEIGHT>1,5</WEIGHT><A2D>130001</A2D>",
                               b"<WEIGHT>abc</WEIGHT><OUT_STATUS>99999</OUT_STATUS>",
                               b"<IN_STATUS>-1</IN_STATUS><SP_STATUS>x</SP_STATUS>",
                               b"<MAXIMUM_LOAD>1e308</MAXIMUM_LOAD><UNIT>gram</UNIT>",
                               b"</WEIGHT><WEIGHT>1</WEIGHT>"]):
        for flags in (1, 1 | 8):  # wrapped; "." or "," as the decimal separator
            write("panel_answer", "status-%d-%d" % (i, flags),
                  bytes([status, flags, 1, 0x00]) + inner)


def transport():
    clear_seeds("transport")
    for name, function, raw, body in answers():
        index = FUNCTIONS.index(function) if function in FUNCTIONS else 11
        # Whole, then in pieces of 7 and of 1 at the tag.
        write("transport", name, bytes([index, 1, 1, len(raw[:255])]) + raw[:255] +
              (bytes([1, len(raw[255:])]) + raw[255:] if len(raw) > 255 else b""))
        if name.startswith("std_0"):
            pieces = b"".join(bytes([1, len(raw[i:i + 7])]) + raw[i:i + 7]
                              for i in range(0, len(raw), 7))
            write("transport", name + "-7", bytes([index, 0]) + pieces)
    status = raw_of("std_00_GetRTStatus")
    cut = status.index(b"</GetRTStatus") + 2
    write("transport", "split-tag", bytes([0, 1, 0]) + struct.pack("<H", cut) + status[:cut] +
          bytes([1, len(status) - cut]) + status[cut:])
    write("transport", "filler-cap", bytes([0, 1, 0xFA, 0xFA]))  # 2 x 4 MiB
    write("transport", "close-then-time", bytes([0, 1, 1, 10]) + status[:10] +
          bytes([0x0B, 0xFC, 0xFC]))  # closed, then 12 s


def raw_of(name):
    return (ANSWERS / name).read_bytes()


def block_parser():
    clear_seeds("block_parser")
    for name, function, raw, body in answers():
        if function == "GetFastSampling":
            write("block_parser", name, bytes([1, 0, 0]) + body)
    for i, answer in enumerate(FAST_HOSTILE + [FAST]):
        for flags, first in ((1, 0), (0, 100), (2, 55), (3, 60)):
            write("block_parser", "hostile-%d-%d" % (i, flags),
                  bytes([flags]) + struct.pack("<H", first) + answer)


def elements():
    clear_seeds("elements")
    for name, function, raw, body in answers():
        if not name.startswith("std_"):
            continue
        for tag in (b"WEIGHT", function.encode()):
            write("elements", "%s-%s" % (name, tag.decode()), bytes([len(tag)]) + tag + raw)
    write("elements", "closing-first", b"\x06WEIGHT</WEIGHT><WEIGHT>1</WEIGHT>")
    write("elements", "nested", b"\x01A<A><<A>>x</A></A>>")


CONFIG = (b"IPaddress,10.0.0.7:8080\r\nStartOutStatus, 1\r\nSetPointCheckBoxStart, 1\r\n"
          b"Start_Sample_Time, 0:00:10 x\r\nStart_Sample_TimeOut, 7000\r\n"
          b"X-mode:Samplings_or_Milisec:, 2\r\nOKA\r\n")


def config_file():
    clear_seeds("config_file")
    write("config_file", "saved", CONFIG)
    write("config_file", "defaults", CONFIG.replace(b"10.0.0.7:8080", b"192.168.1.100")
          .replace(b", 1\r", b", 0\r"))
    write("config_file", "labels-differ",
          b"IPadres,1.2.3.4\r\nStart, 1\r\nx, 0\r\ny,\r\nz, 900\r\nw, 1\r\noka\r\n")
    write("config_file", "latin1", CONFIG.replace(b"0:00:10 x", b"10:00 caf\xe9 \xff"))
    write("config_file", "short", CONFIG[:60])
    write("config_file", "no-marker", CONFIG.replace(b"OKA", b"END"))
    write("config_file", "quoted", b'IPaddress,"10.0.0.7, 8080"\r\n' + CONFIG.split(b"\r\n", 1)[1])
    write("config_file", "timeout-huge", CONFIG.replace(b"7000", b"99999999999"))
    write("config_file", "timeout-text", CONFIG.replace(b"7000", b"&H7FFF"))
    write("config_file", "empty", b"")


START = (b"StartDataFile for Orvel\r\nCard_Name:, QX, 1234568, VANT\r\n"
         b"1_channel_active_status, 1\r\n2_channel_active_status, 0\r\n"
         b"3_channel_active_status, 0\r\n4_channel_active_status, 0\r\n"
         b"TxtNumberOfPoints, 500 \r\ntxtSampling, 50\r\ntxtProcentMinMax, 10 \r\n"
         b"txtMinMaxMiss , 1\r\ntxtMnMxTime, 3\r\ntxtBandRadius, 3\r\ntxtRound, 3\r\n"
         b"txtTimeDivision, 6\r\nOptValueType, 2\r\nOrvel\r\n")


def start_file():
    clear_seeds("start_file")
    write("start_file", "default", START.replace(b"status, 1", b"status, 0"))
    write("start_file", "channel-1", START)
    write("start_file", "bad-status", START.replace(b"status, 1", b"status, 7"))
    write("start_file", "no-marker", START.replace(b"Orvel\r\n", b"Other\r\n"))
    write("start_file", "short", START[:150])
    write("start_file", "points-0", START.replace(b"500 ", b"0 "))
    write("start_file", "points-huge", START.replace(b"500 ", b"40000 "))
    write("start_file", "sampling-neg", START.replace(b"Sampling, 50", b"Sampling, -5"))
    write("start_file", "percent-text", START.replace(b"MinMax, 10 ", b"MinMax, abc "))
    write("start_file", "all-channels", START.replace(b"status, 0", b"status, 1"))
    write("start_file", "value-type-9", START.replace(b"ValueType, 2", b"ValueType, 9"))
    write("start_file", "empty", b"")


TRAILER = (b"-1, -1\r\nStartDateTime:2/19/2004 10:30:53 AM\r\nTORV-NET  \r\n"
           b"Sampling Rate: 20 (ms.)\r\nScanned:\r\nInegrationBufferSize: 12\r\n"
           b"Gain Bias Resol. Units LoLimit HiLimit\r\n  36   49 0.0002 kg     0.234   4.321\r\n"
           b"Average Minimum Maximum Delta1 Delta2 Cnt1 Cnt2\r\n"
           b" 1107  801  1398 -306  291  1  1\r\nSamples: 2\r\n"
           b"Value1_A2D:, 1 \r\nReading1_ms2:,1\r\n")
SAMPLE = (b"Timer2Interval,  300 \r\n-999999  1  2  3  4  2 \r\n 0  1.5\r\n"
          b" 1  -2\r\n 2  3,25\r\n" + TRAILER)


def sample_files():
    blocks = b"Timer2Interval,  300 \r\n"
    k = 0
    for b in range(4):
        blocks += b"-999999  1  %d  40  2  %d \r\n" % (b + 2, k + 9)
        for _ in range(10):
            blocks += b" %d  %d.%03d\r\n" % (k, 12 + k % 5, (k * 91) % 1000)
            k += 1
    many = blocks + TRAILER.replace(b"Samples: 2", b"Samples: 39")
    return {
        "good": SAMPLE,
        "blocks": many,
        "appended": many + SAMPLE.split(b"\r\n", 1)[1],
        "ms": SAMPLE.replace(b"Reading1_ms2:,1", b"Reading1_ms2:,2"),
        "not-number": SAMPLE.replace(b" 1  -2", b" 1  ERR"),
        "out-of-order": SAMPLE.replace(b" 1  -2", b" 7  -2"),
        "no-trailer": SAMPLE.split(b"-1, -1")[0],
        "bad-block": SAMPLE.replace(b"-999999  1  2  3  4  2", b"-999999  1  x"),
        "lf-only": SAMPLE.replace(b"\r\n", b"\n"),
        "huge-index": SAMPLE.replace(b" 2  3,25", b" 9223372036854775807  3"),
        "rate-zero": SAMPLE.replace(b"Rate: 20", b"Rate: 0"),
        "inf": SAMPLE.replace(b" 0  1.5", b" 0  1e400"),
    }


def sample_file():
    clear_seeds("sample_file")
    for name, data in sample_files().items():
        for mode, stretch in ((0, 0xF0), (1, 0x35)):
            write("sample_file", "%s-%d" % (name, mode), bytes([mode, stretch]) + data)


def sample_roundtrip():
    clear_seeds("sample_roundtrip")
    def number(v, decimals):
        return bytes([1]) + struct.pack("<i", v) + bytes([decimals])
    def text(t):
        return bytes([0, len(t)]) + t
    base = b"".join(number(12345 + 17 * i, 3) for i in range(30))
    write("sample_roundtrip", "numbers-blocks", bytes([0, 3, 10, 10, 10]) + base)
    write("sample_roundtrip", "numbers-rt", bytes([1, 0, 0]) + base)
    mixed = text(b"ERR") + number(-5, 0) + text(b"1,5") + text(b" 2.5") + text(b"x") + \
        number(2**31 - 1, 4) + text(b"1e5") + text(b"") + number(-2**31, 2) + text(b"&H10")
    write("sample_roundtrip", "mixed-blocks", bytes([0, 2, 3, 4]) + mixed)
    write("sample_roundtrip", "mixed-rt", bytes([1, 0, 0]) + mixed)


def sim_request():
    clear_seeds("sim_request")
    requests = [b"POST /GetRTStatus\r\nContent-Length: 4\r\n\r\nID=4\r\n",
                b"POST /SetSetpoints\r\nContent-Length: 62\r\n\r\n"
                b"ID=1&SETPOINT_1=100&SETPOINT_2=-1&SETPOINT_3=2500&SETPOINT_4=-1\r\n",
                b"POST /SetD2A\r\nContent-Length: 12\r\n\r\nID=1&D2A=128\r\n",
                b"POST /SetOutput\r\nContent-Length: 21\r\n\r\nID=4&OUT_STATUS=16382\r\n",
                b"POST /SetIntegration HTTP/1.0\r\ncontent-length:19\r\n\r\nID=1&INTEGRATION=16",
                b"POST /StartSample\r\nContent-Length: 0\r\n\r\n\r\n",
                b"\r\n\nPOST /ch2_switch\nContent-Length: 0\n\n",
                b"GET / HTTP/1.1\r\nHost: x\r\n\r\n",
                b"POST /GetRTStatus\r\nContent-Length: 99999999999\r\n\r\n",
                b"POST /GetRTStatus\r\nContent-Length: -4\r\n\r\nID=4",
                b"POST /\r\n\r\n",
                b"POST /GetRTStatus\r\nBroken header\r\n\r\n"]
    for i, r in enumerate(requests):
        write("sim_request", "whole-%02d" % i, bytes([0, 0]) + r)
        pieces = [r[j:j + 5] for j in range(0, len(r), 5)][:15]
        rest = r[5 * len(pieces):]
        write("sim_request", "pieces-%02d" % i, bytes([0, len(pieces)]) +
              b"".join(bytes([len(p)]) + p for p in pieces) + rest)
    write("sim_request", "small-limit", bytes([1, 0]) + requests[1])


def client_answers():
    clear_seeds("client_answers")
    parser = {"GetRTStatus": 0, "GetSetpoints": 1, "StartSample": 2, "StopSample": 2,
              "ch1_switch": 2, "ch2_switch": 2, "GetFastSampling": 2, "SetOutput": 3,
              "SetD2A": 4, "SetIntegration": 5, "SetSetpoints": 2, "Nothing": 2}
    for name, function, raw, body in answers():
        write("client_answers", name, bytes([parser[function]]) + body)
    status = raw_of("std_00_GetRTStatus")
    for i, (old, new) in enumerate([(b"12.", b"1e999"), (b"<A2D>", b"<A2D>99999999999"),
                                    (b"16383", b"65536"), (b"<ERROR_CODE>0", b"<ERROR_CODE> 0 "),
                                    (b"KG", b"kg\"\n")]):
        write("client_answers", "status-%d" % i, bytes([0]) + status.replace(old, new, 1))


def exporter_metrics():
    clear_seeds("exporter_metrics")
    figures = struct.pack("<HHHB", 10, 2, 12, 1) + bytes([3, 1]) + struct.pack("<H", 150)
    for name, function, raw, body in answers():
        if function == "GetRTStatus":
            write("exporter_metrics", name, bytes([6, 0]) + struct.pack("<H", 40) + figures +
                  bytes([2]) + struct.pack("<HH", 12, 900) + body)
    for kind in range(6):
        write("exporter_metrics", "failure-%d" % kind, bytes([kind, 0]) +
              struct.pack("<H", 3000) + figures + bytes([0]))
    nan = struct.pack(">d", float("nan"))
    write("exporter_metrics", "odd-numbers", bytes([6, 1]) + nan + struct.pack("<HHHB", 1, 1, 1, 0) +
          bytes([0, 0]) + struct.pack(">d", float("inf")) + struct.pack(">d", -0.0) + bytes([1]) +
          nan + raw_of("std_00_GetRTStatus").split(b"\r\n\r\n")[1].replace(b"KG", b'K"G\\'))


def exporter_request():
    clear_seeds("exporter_request")
    status = raw_of("std_00_GetRTStatus").split(b"\r\n\r\n")[1]
    def get(target, extra=b""):
        return b"GET " + target + b" HTTP/1.1\r\nHost: x\r\n" + extra + b"\r\n"
    requests = [get(b"/probe?target=127.0.0.1"), get(b"/probe?target=127.0.0.5:8081"),
                get(b"/probe?target=%5B::1%5D:80"), get(b"/probe?target=10.0.0.1"),
                get(b"/probe?target=card.local"), get(b"/probe"), get(b"/probe?target="),
                get(b"/probe?target=127.0.0.1&target=127.0.0.2"), get(b"/metrics"), get(b"/"),
                get(b"/nothing"), b"POST /probe?target=127.0.0.1 HTTP/1.1\r\nHost: x\r\n"
                b"Content-Length: 3\r\n\r\nabc", get(b"/probe?target=127.0.0.1", b"X: " +
                b"y" * 200 + b"\r\n"), b"GET /probe?target=127.0.0.1 HTTP/1.0\r\n\r\n",
                b"garbage\r\n\r\n"]
    for i, r in enumerate(requests):
        write("exporter_request", "http-%02d" % i, bytes([0, len(status[:255])]) + status[:255] + r)
    write("exporter_request", "http-card-error", bytes([0, 60]) +
          b"<GetRTStatus><ERROR_CODE>7</ERROR_CODE><WEIGHT>x</WEIGHT></GetRTStatus>".ljust(60) +
          requests[0])
    for i, (net, target) in enumerate([(b"127.0.0.0/8", b"127.0.0.1:80"), (b"::1", b"[::1]:8080"),
                                       (b"10.0.0.0/33", b"10.0.0.1"), (b"::ffff:10.0.0.0/104", b"::ffff:10.0.0.7"),
                                       (b"0.0.0.0/0", b"card-1.plant.local:81"), (b"x", b"host:0")]):
        write("exporter_request", "target-%d" % i, bytes([1, len(net)]) + net + target)
    for i, args in enumerate([[b"--listen", b"127.0.0.1:9860", b"--allow", b"10.0.0.0/8"],
                              [b"--timeout", b"0"], [b"--max-in-flight", b"99999999999"],
                              [b"--help"], [b"--listen"], [b"--allow", b"::/0", b"--timeout=5"]]):
        write("exporter_request", "args-%d" % i, bytes([2]) + b"\0".join(args))


def torvctl_args():
    clear_seeds("torvctl_args")
    cases = [(0, [b"on", b"1", b"2", b"off", b"3"]), (0, [b"--word", b"16383"]),
             (0, [b"on", b"15"]), (0, []), (0, [b"--word", b"0x3fff", b"on", b"1"]),
             (1, []), (1, [b"100", b"-1", b"2500", b"-1"]), (1, [b"1", b"2"]),
             (1, [b"abc", b"1", b"1", b"1"]), (2, [b"128"]),
             (2, [b"0x80"]), (2, [b"256"]), (3, [b"16"]), (3, [b"7"]), (4, [b"2"]), (4, [b"3"])]
    for i, (command, args) in enumerate(cases):
        write("torvctl_args", "args-%02d" % i, bytes([command, 0, 0, 0]) + b"\0".join(args))
    # Each fault of the simulator once (chunked, trickle, silent, refuse, reset, garbage,
    # oversize, error code) on a command that reaches the card.
    for kind in range(1, 9):
        write("torvctl_args", "fault-%d" % kind, bytes([2, kind, 3, 7]) + b"100")
    # Whole command lines (first byte 5): status and sample with every option, and refusals.
    lines = [b"\0".join([b"status", b"-a", b"127.0.0.1:8081", b"--count", b"3", b"--interval=250",
                          b"-f", b"csv", b"-o", b"out.csv", b"-t", b"1500"]),
             b"\n".join([b"--address=[::1]:80", b"status", b"-c", b"0", b"-i", b"0",
                          b"--format=jsonl", b"--output=rows", b"--timeout=0x10"]),
             b"\0".join([b"-a", b"card.local", b"sample", b"--seconds", b"2.5", b"-o", b"s.txt"]),
             b"\0".join([b"-a", b"10.0.0.1", b"sample", b"-n", b"20000", b"--output=s.txt"]),
             b"\0".join([b"-a", b"h", b"status", b"--count", b"-1", b"--interval=86400001",
                          b"-f", b"xml", b"-o="]),
             b"\0".join([b"-a", b"h1", b"-a", b"h2", b"sample", b"-s", b"0", b"-n", b"5",
                          b"--readings"]),
             b"\0".join([b"--bogus", b"status"]), b"\0".join([b"-a", b"host:0", b"status", b"-t"]),
             b"\0".join([b"status", b"--help", b"-a"]), b"\0".join([b"frobnicate", b"--version"])]
    for i, line in enumerate(lines):
        write("torvctl_args", "line-%02d" % i, bytes([5]) + line)


if __name__ == "__main__":
    client_answers()
    exporter_metrics()
    exporter_request()
    torvctl_args()
    panel_answer()
    transport()
    block_parser()
    elements()
    config_file()
    start_file()
    sample_file()
    sample_roundtrip()
    sim_request()
    for folder in sorted(CORPUS.iterdir()):
        print("%-18s %3d files" % (folder.name, len(list(folder.iterdir()))))
