#!/usr/bin/env python3
"""torv-exporter as a whole, with real processes on loopback:

  prometheus  three simulators with different weights, a closed port and a card in overload,
              scraped by Debian's Prometheus through the exporter every second; checks the
              weights, the closed port's probe success and outputs switched on one simulator
              through Prometheus' HTTP API, and runs promtool on the exporter's output and on
              the shipped examples.
  hostile     bad requests, a silent card, and 300 concurrent probes of one slow card: the
              status codes, the time-out, one request to the card at a time, and the
              exporter's memory flat afterwards.

Usage: exporter_system.py MODE --bin BUILD_DIR --src SOURCE_DIR [--report FILE] [--sanitized]
Exit status 77 (skipped) when Prometheus is not installed. Every process started is stopped
by its process id, also on failure.
"""
import argparse
import concurrent.futures
import http.client
import json
import os
import re
import shutil
import socket
import subprocess
import sys
import tempfile
import time
import urllib.parse
import urllib.request

PROCS = []
REPORT = []


def note(line=""):
    print(line, flush=True)
    REPORT.append(line)


def free_port():
    with socket.socket() as s:
        s.bind(("127.0.0.1", 0))
        return s.getsockname()[1]


def start(args, pattern=None):
    """Starts a process; with a pattern, waits for the stderr line that gives its port."""
    p = subprocess.Popen(args, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
    PROCS.append(p)
    if pattern is None:
        return p, None
    deadline = time.time() + 10
    while time.time() < deadline:
        line = p.stderr.readline()
        m = re.search(pattern, line)
        if m:
            return p, int(m.group(1))
        if not line and p.poll() is not None:
            break
    raise RuntimeError("%s did not start" % args[0])


def stop_all():
    for p in PROCS:
        if p.poll() is None:
            os.kill(p.pid, 15)
    for p in PROCS:
        try:
            p.wait(timeout=5)
        except subprocess.TimeoutExpired:
            os.kill(p.pid, 9)


def get(port, path, timeout=10, headers={}):
    c = http.client.HTTPConnection("127.0.0.1", port, timeout=timeout)
    try:
        c.request("GET", path, headers=headers)
        r = c.getresponse()
        return r.status, r.read().decode("utf-8", "replace")
    finally:
        c.close()


def sim(bin_dir, *extra):
    return start([os.path.join(bin_dir, "sim", "torv-sim"), "--port", "0", "--quiet",
                  "--inputs-period", "0"] + list(extra), r"listening on 127\.0\.0\.1:(\d+)")[1]


def exporter(bin_dir, *extra):
    return start([os.path.join(bin_dir, "src", "app", "torv-exporter"), "--listen",
                  "127.0.0.1:0"] + list(extra), r"listening on http://127\.0\.0\.1:(\d+)/")


def set_outputs(port, word):
    """A SetOutput request to a simulator, framed as the card expects it."""
    body = "ID=4&OUT_STATUS=%d" % word
    with socket.create_connection(("127.0.0.1", port), timeout=5) as s:
        s.sendall(("POST /SetOutput\r\nContent-Length: %d\r\n\r\n%s\r\n" % (len(body), body)).encode())
        answer = b""
        while b"</SetOutput" not in answer:
            chunk = s.recv(4096)
            if not chunk:
                break
            answer += chunk
    assert b"<ERROR_CODE>0<" in answer, answer


def promtool(*args, stdin=None):
    r = subprocess.run(["promtool"] + list(args), input=stdin, capture_output=True, text=True)
    return r.returncode, (r.stdout + r.stderr).strip()


def query(port, expr):
    url = "http://127.0.0.1:%d/api/v1/query?query=%s" % (port, urllib.parse.quote(expr))
    with urllib.request.urlopen(url, timeout=5) as r:
        data = json.load(r)
    assert data["status"] == "success", data
    return {tuple(sorted((k, v) for k, v in s["metric"].items() if k not in ("job", "__name__"))):
            float(s["value"][1]) for s in data["data"]["result"]}


def wait_for(what, check, seconds):
    deadline = time.time() + seconds
    last = None
    while time.time() < deadline:
        try:
            last = check()
        except OSError as e:  # Prometheus not listening yet
            last = e
        if last and not isinstance(last, OSError):
            return last
        time.sleep(0.25)
    raise AssertionError("%s: not seen within %d s (last: %r)" % (what, seconds, last))


def run_prometheus(args):
    if not shutil.which("prometheus") or not shutil.which("promtool"):
        print("prometheus/promtool not installed: skipped")
        return 77
    weights = {"sim-a": 100.0, "sim-b": 250.5, "sim-c": 1234.5}
    cards = {name: "127.0.0.1:%d" % sim(args.bin, "--signal", "steady", "--weight", str(w))
             for name, w in weights.items()}
    closed = "127.0.0.1:%d" % free_port()
    overload = "127.0.0.1:%d" % sim(args.bin, "--overload", "--weight", "3100")
    _, exp = exporter(args.bin, "--timeout", "500", "--quiet")
    for name, target in cards.items():
        note("%s: torv-sim --signal steady --weight %g on %s" % (name, weights[name], target))
    note("closed port: %s; card in overload: torv-sim --overload on %s" % (closed, overload))

    # promtool on the exporter's output for a healthy card, a card in overload, a dead card.
    for label, target in (("healthy card", cards["sim-b"]), ("card in overload", overload),
                          ("dead card", closed)):
        status, text = get(exp, "/probe?target=" + target)
        assert status == 200, (label, status)
        rc, out = promtool("check", "metrics", stdin=text)
        note("promtool check metrics, %s (%s): %s" % (label, target, "accepted" if rc == 0 else out))
        assert rc == 0, out
        assert ("\ntorv_overload 1\n" in text) == (label == "card in overload"), text
    status, text = get(exp, "/metrics")
    rc, out = promtool("check", "metrics", stdin=text)
    note("promtool check metrics, exporter /metrics: %s" % ("accepted" if rc == 0 else out))
    assert rc == 0, out
    examples = os.path.join(args.src, "share", "prometheus")
    for what in (("rules", os.path.join(examples, "torv-alerts.yml")),
                 ("config", os.path.join(examples, "prometheus.yml"))):
        rc, out = promtool("check", *what)
        note("promtool check %s %s: %s" % (what[0], os.path.basename(what[1]),
                                           "SUCCESS" if rc == 0 else out))
        assert rc == 0, out

    tmp = tempfile.mkdtemp(prefix="torv-prom-")
    try:
        config = os.path.join(tmp, "prometheus.yml")
        targets = ", ".join("'%s'" % t for t in list(cards.values()) + [closed])
        with open(config, "w") as f:
            f.write("""global:
  scrape_interval: 1s
  scrape_timeout: 900ms
scrape_configs:
  - job_name: torv
    metrics_path: /probe
    static_configs:
      - targets: [%s]
    relabel_configs:
      - source_labels: [__address__]
        target_label: __param_target
      - source_labels: [__param_target]
        target_label: instance
      - target_label: __address__
        replacement: 127.0.0.1:%d
""" % (targets, exp))
        prom_port = free_port()
        start(["prometheus", "--config.file", config, "--storage.tsdb.path", os.path.join(tmp, "data"),
               "--web.listen-address", "127.0.0.1:%d" % prom_port, "--log.level", "warn"])
        began = time.time()
        wait_for("two scrapes of every target", lambda: len([
            v for v in query(prom_port, "count_over_time(torv_probe_success[1m])").values()
            if v >= 2]) == 4, 20)
        note("Prometheus: two scrapes of every target after %.1f s" % (time.time() - began))
        weights_seen = query(prom_port, "torv_weight")
        note("query torv_weight:")
        for labels, value in sorted(weights_seen.items()):
            note("  %s  %g" % (dict(labels), value))
        for name, target in cards.items():
            key = (("instance", target), ("unit", "KG"))
            assert weights_seen.get(key) == weights[name], (name, weights_seen)
        success = query(prom_port, "torv_probe_success")
        note("query torv_probe_success:")
        for labels, value in sorted(success.items()):
            note("  %s  %g" % (dict(labels), value))
        assert success[(("instance", closed),)] == 0, success
        assert all(success[(("instance", t),)] == 1 for t in cards.values()), success
        failure = query(prom_port, "torv_probe_failure")
        note("query torv_probe_failure: %s" % {dict(k)["instance"]: dict(k)["reason"] for k in failure})

        # Outputs 3 and 14 on at the first simulator (a 0 bit is on); the others stay off.
        sim_a = cards["sim-a"]
        word = 0x3FFF & ~(1 << 2) & ~(1 << 13)
        set_outputs(int(sim_a.split(":")[1]), word)
        on = wait_for("outputs 3 and 14 on", lambda: sorted(
            int(dict(k)["output"]) for k, v in query(
                prom_port, 'torv_output_on{instance="%s"}' % sim_a).items() if v == 1) == [3, 14]
            and query(prom_port, 'sum(torv_output_on{instance!="%s"})' % sim_a), 10)
        lit = query(prom_port, 'torv_output_on{instance="%s"} == 1' % sim_a)
        note("after SetOutput OUT_STATUS=%d on %s, query torv_output_on == 1: outputs %s" % (
            word, sim_a, sorted(int(dict(k)["output"]) for k in lit)))
        assert on is not None
        others = query(prom_port, 'sum(torv_output_on{instance!="%s"})' % sim_a)
        assert list(others.values()) == [0.0], others
        note("whole run: %.1f s" % (time.time() - began))
    finally:
        stop_all()
        shutil.rmtree(tmp, ignore_errors=True)
    return 0


def rss_kib(pid):
    with open("/proc/%d/status" % pid) as f:
        return int(re.search(r"VmRSS:\s+(\d+)", f.read()).group(1))


def run_hostile(args):
    slow_port = free_port()
    bad_card = os.path.join(args.src, "tests", "tools", "bad_card.py")
    start([sys.executable, bad_card, "slow", "--port", str(slow_port), "--delay", "2000",
           "--seconds", "60"])
    silent_port = free_port()
    start([sys.executable, bad_card, "silent", "--port", str(silent_port), "--seconds", "60"])
    exp_proc, exp = exporter(args.bin, "--allow", "127.0.0.0/8", "--allow", "::1",
                             "--max-in-flight", "200", "--timeout", "1000", "--quiet")
    try:
        def card_requests():
            text = get(exp, "/metrics")[1]
            return float(re.search(r"^torv_exporter_card_requests_total (\S+)$", text, re.M).group(1))

        cases = [("/probe", 400), ("/probe?target=:::", 400), ("/probe?target=" + "a" * 10240, 400),
                 ("/probe?target=10.0.0.1", 403), ("/probe?target=%5B2001:db8::1%5D:80", 403),
                 ("/probe?target=127.0.0.1:0", 400), ("/probe?target=1.2.3.4&target=127.0.0.1", 400),
                 ("/nothing", 404)]
        for path, expected in cases:
            status, body = get(exp, path)
            note("%-40s -> %d %s" % (path[:40], status, body.strip()[:60]))
            assert status == expected, (path, status, body)
        for request, expected in ((b"POST /probe?target=127.0.0.1 HTTP/1.1\r\nContent-Length: 0\r\n\r\n", 405),
                                  (b"GET /probe HTTP/1.1\r\nX: " + b"x" * 20000 + b"\r\n\r\n", 431)):
            with socket.create_connection(("127.0.0.1", exp), timeout=5) as s:
                s.sendall(request)
                answer = s.recv(100)
            note("%-40s -> %s" % ("%s (%d bytes)" % (request.split(b" HTTP")[0].decode(), len(request)),
                                  answer[9:40].split(b"\r")[0].decode()))
            assert answer.startswith(b"HTTP/1.1 %d" % expected), answer
        assert card_requests() == 0, "a refused request never reaches a card"
        status, text = get(exp, "/probe?target=localhost:1")  # a name: resolved, then checked
        note("/probe?target=localhost:1 (closed)      -> %d %s" % (
            status, re.search(r"^torv_probe_failure.*$", text, re.M).group(0)))
        assert status == 200 and 'reason="refused"' in text, (status, text)

        def burst():
            with concurrent.futures.ThreadPoolExecutor(max_workers=300) as pool:
                return list(pool.map(lambda _: get(exp, "/probe?target=127.0.0.1:%d" % slow_port),
                                     range(300)))

        time.sleep(1.0)  # the cards must be listening
        began = time.time()
        status, text = get(exp, "/probe?target=127.0.0.1:%d" % silent_port)
        took = time.time() - began
        note("silent card, --timeout 1000: HTTP %d after %.2f s, %s" % (
            status, took, re.search(r"^torv_probe_failure.*$", text, re.M).group(0)))
        assert status == 200 and 'reason="silent"' in text and 0.9 < took < 2.5, (status, took, text)
        began = time.time()  # a scrape that waits 0.8 s: the card gets 0.3 s
        get(exp, "/probe?target=127.0.0.1:%d" % silent_port,
            headers={"X-Prometheus-Scrape-Timeout-Seconds": "0.8"})
        took = time.time() - began
        note("silent card, scrape time-out 0.8 s: answered after %.2f s" % took)
        assert 0.25 < took < 0.7, took
        results = burst()
        codes = sorted(set(s for s, _ in results))
        ok = sum(1 for s, t in results if s == 200 and "torv_probe_success 1" in t)
        busy = sum(1 for s, _ in results if s == 503)
        note("300 concurrent probes of one slow card: %d x 200 (card answered), %d x 503" % (ok, busy))
        assert set(codes) <= {200, 503} and ok + busy == 300 and 0 < ok <= 200, codes
        # Scrapers that give up before the card answers: their answers go nowhere, harmlessly.
        for _ in range(20):
            with socket.create_connection(("127.0.0.1", exp)) as s:
                s.sendall(b"GET /probe?target=127.0.0.1:%d HTTP/1.1\r\n\r\n" % slow_port)
        time.sleep(1.0)
        assert get(exp, "/probe?target=127.0.0.1:%d" % slow_port)[0] == 200
        def heap():
            text = get(exp, "/metrics")[1]
            return float(re.search(r"^torv_exporter_heap_in_use_bytes (\S+)$", text, re.M).group(1)), text

        heap_first, _ = heap()
        rss_first = rss_kib(exp_proc.pid)
        for _ in range(3):
            burst()
        rss_last = rss_kib(exp_proc.pid)
        heap_last, metrics = heap()
        sent = card_requests()
        probes = sum(float(v) for v in re.findall(r'torv_exporter_probes_total\{[^}]*\} (\S+)', metrics))
        note("after 4 bursts: %d probes answered with %d requests to the card" % (probes, sent))
        note("heap in use %d KiB after the first burst, %d KiB after the fourth; resident %d KiB, "
             "%d KiB" % (heap_first / 1024, heap_last / 1024, rss_first, rss_last))
        assert sent <= 12, sent  # a few shared requests per burst
        if not args.sanitized:  # the address sanitizer keeps freed memory in quarantine
            assert heap_last - heap_first < 512 * 1024, (heap_first, heap_last)
            assert rss_last - rss_first < 8192, (rss_first, rss_last)
        assert exp_proc.poll() is None
    finally:
        stop_all()
    return 0


def main():
    p = argparse.ArgumentParser()
    p.add_argument("mode", choices=["prometheus", "hostile"])
    p.add_argument("--bin", required=True)
    p.add_argument("--src", required=True)
    p.add_argument("--report")
    p.add_argument("--sanitized", action="store_true", help="built with the address sanitizer")
    args = p.parse_args()
    try:
        rc = run_prometheus(args) if args.mode == "prometheus" else run_hostile(args)
    except Exception:
        stop_all()
        raise
    if args.report and rc == 0:
        with open(args.report, "a") as f:
            f.write("\n".join(REPORT) + "\n")
    return rc


if __name__ == "__main__":
    sys.exit(main())
