"""vboard and the library of USB calls, without the tool: options, ports, endings."""
import os
import pathlib
import select
import signal
import socket
import struct
import subprocess
import sys
import termios
import time

from harness import EXAMPLES, main
from virtualboard import LIBRARY, BoardTest, usb_environment


class Port:
    """The host's end of a pseudo-terminal."""

    def __init__(self, name):
        self.fd = os.open(name, os.O_RDWR | os.O_NOCTTY)

    def send(self, data):
        os.write(self.fd, data)

    def read(self, count, timeout=20):
        """`count` bytes, or fewer when the board hangs up."""
        data = b""
        while len(data) < count:
            if not select.select([self.fd], [], [], timeout)[0]:
                raise TimeoutError(f"{data!r} instead of {count} bytes")
            try:
                got = os.read(self.fd, count - len(data))
            except OSError:
                got = b""
            if not got:
                break
            data += got
        return data

    def wake(self):
        """Asks for the prompt as hosts do: again while nothing comes, and past what a host before has
        left behind."""
        seen = b""
        for _ in range(100):
            self.send(b"\r")
            while select.select([self.fd], [], [], 0.2)[0]:
                seen += os.read(self.fd, 1)
                if seen.endswith(b"\r\n>"):
                    return
        raise TimeoutError(f"{seen!r} without a prompt")

    def command(self, *numbers):
        for number in numbers:
            self.send(bytes([0, number]))
            self.read(1)

    def frame(self, *data):
        self.send(bytes([len(data), *data]))
        return self.read(2 * len(data))

    def close(self):
        os.close(self.fd)


class OptionsTest(BoardTest):
    def test_bad_options_end_with_a_message(self):
        for arguments in (["--frob"], ["stray"], ["--families", "some"], ["--families"], ["--once=1"],
                          ["--fixed-code", "256"], ["--fixed-code", "-1"], ["--code-size", "65"],
                          ["--code-size", "17M"], ["--rom-version", "1"], ["--rom-version", "1.100"],
                          ["--device-id", "a\nb"], ["--image", "x@y"], ["--image", "@3"],
                          ["--fault", "cut"], ["--fault", "dead=9-3"], ["--fault", "unpowered=2"],
                          ["--save-code", ""], ["--log", self.folder / "missing" / "log"],
                          ["--image", self.folder / "missing"], ["--usb", self.folder / ("x" * 200)],
                          ["--usb", self.folder / "missing" / "socket"]):
            with self.subTest(arguments=arguments):
                result = self.run_program("vboard", *arguments, timeout=20)
                self.expect(result, 1, out="", err=["vboard: "])
                self.assertEqual(result.err.count("\n"), 1, result)

    def test_help_names_every_option(self):
        result = self.run_program("vboard", "--help")
        self.expect(result, 0, err="")
        manual = (EXAMPLES.parent / "docs" / "board.md").read_text()
        options = [line.split()[0] for line in result.out.splitlines() if line.startswith("  --")]
        self.assertGreater(len(options), 15)
        for option in options:
            self.assertIn(f"`{option}", manual)

    def test_images_that_do_not_fit_or_are_damaged(self):
        damaged = self.write("damaged.hex", ":0400000001020304F3\n:00000001FF\n")
        large = self.write("large.bin", bytes(100))
        for arguments, message in ((["--image", damaged], "damaged.hex, line 1: bad checksum"),
                                   (["--image", f"{large}@0xFFC0"], "does not fit the code memory"),
                                   (["--data-image", large, "--data-size", "64"],
                                    "does not fit the data memory"),
                                   (["--image", self.folder], "cannot read")):
            with self.subTest(message=message):
                self.expect(self.run_program("vboard", *arguments, timeout=20), 1, out="", err=[message])

    def test_memories_go_in_and_come_out(self):
        binary = self.write("some.bin", b":not hex")
        data = self.folder / "data.bin"
        board = self.board("--image", EXAMPLES / "first" / "counter.hex", "--image", f"{binary}@0x100",
                           "--data-image", f"{binary}@0x20", "--save-data", data, "--code-size", "8K",
                           "--data-size", "0x400", "--fault", "unpowered")
        self.expect(board.stop(), 0, out="", err="")
        self.assertEqual(len(board.code()), 8192)
        self.assertEqual(board.code(0, 6), bytes.fromhex("000901 4a fe0c"))
        self.assertEqual(board.code(0xFF, 10), b"\xff:not hex\xff")
        self.assertEqual(data.read_bytes(), bytes(0x20) + b":not hex" + bytes(0x400 - 0x28))

    def test_files_that_cannot_be_written(self):
        board = self.board("--save-data", self.folder / "missing" / "data.bin", "--log", "/dev/full")
        port = Port(board.port)
        port.send(b"\r")
        port.read(3)
        port.close()
        self.expect(board.stop(), 1, err=["data.bin: No such file", "cannot write /dev/full"])
        self.assertEqual(len(board.code()), 0x10000)  # the other file is there
        with open("/dev/full", "w") as full:
            result = self.run_program("vboard", stdout=full, timeout=20)
        self.expect(result, 1, err=["cannot write the name of the port"])


class SerialTest(BoardTest):
    def test_hosts_come_and_go(self):
        board = self.board("--log", self.folder / "log")
        for _ in range(3):  # each finds the adapter in its text mode
            port = Port(board.port)
            port.wake()
            port.send(b"Z\r\0\5\0\4")
            self.assertEqual(port.read(5)[3:], b"\5\4")
            port.send(b"\x05abc")  # the cable goes in the middle of a frame, with answers not fetched
            port.close()
        self.assertEqual(termios.tcgetattr(os.open(board.port, os.O_RDWR | os.O_NOCTTY))[3] & termios.ECHO, 0)
        self.expect(board.stop(signal.SIGINT), 0, err="")
        log = (self.folder / "log").read_text()
        self.assertTrue(log.startswith("host  0: 0d\nboard 0: 0d 0a 3e\n"), log)
        self.assertEqual(log.count("05 61 62 63"), 3, log)

    def test_waiting_costs_nothing(self):
        board = self.board("--image", EXAMPLES / "first" / "counter.hex", "--fault", "no-bootloader")
        port = Port(board.port)
        port.send(b"Z\r\0\5")  # the program runs until here, where it is held in reset
        port.read(4)
        self.assert_idle(board)
        port.close()
        self.assert_idle(board)
        board.stop()
        # A program in a loop of its own.
        loop = self.write("loop.bin", b"\xff\x0c")
        self.assert_idle(self.board("--image", loop))

    def assert_idle(self, board):
        def ticks():
            fields = pathlib.Path(f"/proc/{board.process.pid}/stat").read_text().rsplit(")", 1)[1].split()
            return int(fields[11]) + int(fields[12])
        time.sleep(0.2)
        before = ticks()
        time.sleep(0.5)
        self.assertLess(ticks() - before, 10)

    def test_once_ends_when_the_last_client_has_gone(self):
        board = self.board("--once")
        first, second = Port(board.port), Port(board.port)
        first.close()
        second.send(b"\r")
        self.assertEqual(second.read(3), b"\r\n>")
        second.close()
        self.expect(board.wait(), 0, out="", err="")

    def test_unexpected_bytes_are_told_with_what_led_to_them(self):
        board = self.board()
        port = Port(board.port)
        port.send(b"Z\r\0\5\0\4")
        port.read(5)
        port.send(b"\0\x2a\0\2")
        self.assertEqual(port.read(1), b"\2")
        port.close()
        result = board.stop()
        self.expect(result, 1, err=["vboard: unknown adapter command 0x2a\n", "host  0: 5a 0d 00 05 00 04"])

    def test_a_pulled_cable_hangs_up_and_keeps_what_was_done(self):
        # Into the bootloader, then a load of one byte a command; the second loses its last byte.
        into = [(5,), (1, 3), b"\4", (2, 3), b"\1", (1,), b"\2", (2, 8, 4)]
        length = 6 + sum(2 * len(part) if isinstance(part, tuple) else 1 + len(part) for part in into)
        polls = 2 * 2  # the adapter waits for the bootloader by itself
        loads = [[0x10, 1, 0, address, 0, 0, 0x40 + address, 0] for address in (0, 1)]
        board = self.board("--fault", f"cut={length + polls + 9 + 7}")
        port = Port(board.port)
        port.send(b"Z\r\0\5\0\4")
        port.read(5)
        for part in into:
            if isinstance(part, tuple):
                port.command(*part)
            else:
                port.frame(*part)
        for _ in range(2):
            status = port.frame(0)
        self.assertEqual(status, b"\3>")
        self.assertEqual(len(port.frame(*loads[0])), 16)
        self.assertLess(len(port.frame(*loads[1])), 16)
        self.expect(board.wait(), 0, err="")
        self.assertEqual(board.code(0, 3), b"\x40\xff\xff")

    def test_a_host_that_does_not_fetch_its_answers(self):
        board = self.board()
        port = Port(board.port)
        os.set_blocking(port.fd, False)
        port.send(b"Z\r\0\5")
        port.read(4)
        sent = 0
        while select.select([], [port.fd], [], 1)[1] and sent < 200_000:
            sent += os.write(port.fd, b"\xff" + bytes(255))
        self.assertEqual(board.process.poll(), None)
        port.close()
        self.expect(board.stop(), 0, err="")


# A host of the USB calls: what it prints is what the test looks at.
USB_HOST = """
import ctypes, sys
usb = ctypes.CDLL(sys.argv[1])
class Descriptor(ctypes.Structure):
    _pack_ = 1
    _fields_ = [("head", ctypes.c_uint8 * 8), ("idVendor", ctypes.c_uint16), ("idProduct", ctypes.c_uint16),
                ("bcd", ctypes.c_uint16), ("iManufacturer", ctypes.c_uint8), ("iProduct", ctypes.c_uint8),
                ("iSerialNumber", ctypes.c_uint8), ("configurations", ctypes.c_uint8)]
class Device(ctypes.Structure): pass
Device._fields_ = [("next", ctypes.POINTER(Device)), ("prev", ctypes.POINTER(Device)),
                   ("filename", ctypes.c_char * 4097), ("bus", ctypes.c_void_p), ("descriptor", Descriptor)]
class Bus(ctypes.Structure):
    _fields_ = [("next", ctypes.c_void_p), ("prev", ctypes.c_void_p), ("dirname", ctypes.c_char * 4097),
                ("devices", ctypes.POINTER(Device))]
usb.usb_get_busses.restype = ctypes.POINTER(Bus)
usb.usb_open.restype = ctypes.c_void_p
usb.usb_open.argtypes = [ctypes.POINTER(Device)]
usb.usb_strerror.restype = ctypes.c_char_p
for name in ("usb_close", "usb_get_string_simple", "usb_set_configuration", "usb_claim_interface",
             "usb_release_interface", "usb_bulk_write", "usb_bulk_read", "usb_reset"):
    f = getattr(usb, name)
    f.argtypes = [ctypes.c_void_p] + {"usb_get_string_simple": [ctypes.c_int, ctypes.c_char_p, ctypes.c_size_t],
        "usb_bulk_write": [ctypes.c_int, ctypes.c_char_p, ctypes.c_int, ctypes.c_int],
        "usb_bulk_read": [ctypes.c_int, ctypes.c_char_p, ctypes.c_int, ctypes.c_int]}.get(name,
        [] if name in ("usb_close", "usb_reset") else [ctypes.c_int])
usb.usb_init()
def devices():
    usb.usb_find_busses()
    usb.usb_find_devices()
    found, device = [], usb.usb_get_busses().contents.devices
    while device:
        found.append(device)
        device = device.contents.next
    return found
def text(handle, index):
    buffer = ctypes.create_string_buffer(256)
    return buffer.value.decode() if usb.usb_get_string_simple(handle, index, buffer, 256) >= 0 else None
def claim(device):
    handle = usb.usb_open(device)
    assert usb.usb_set_configuration(handle, 1) == 0
    return handle, usb.usb_claim_interface(handle, 0)
def write(handle, *data, endpoint=2):
    return usb.usb_bulk_write(handle, endpoint, bytes(data), len(data), 5000)
def read(handle, count, timeout=5000):
    buffer = ctypes.create_string_buffer(count)
    got = usb.usb_bulk_read(handle, 0x81, buffer, count, timeout)
    return buffer.raw[:got].hex() if got >= 0 else got
START = (0xF8, 0xF8, 0xF9, 0xF9, 0xF9, 0xFA, 0x80)
"""


class UsbTest(BoardTest):
    def host(self, boards, script):
        """The lines that a script on top of USB_HOST prints."""
        environment = usb_environment(self.environment, *boards)
        del environment["LD_PRELOAD"]  # the library is opened by name
        done = subprocess.run([sys.executable, "-c", USB_HOST + script, str(LIBRARY)], env=environment,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=60)
        self.assertEqual(done.returncode, 0, done.stderr.decode())
        return done.stdout.decode().splitlines()

    def test_no_board_no_adapter(self):
        self.assertEqual(self.host([], "print(len(devices()))"), ["0"])
        board = self.board("--usb", "--once")
        board.stop()
        self.assertEqual(self.host([board], "print(len(devices()))"), ["0"])

    def test_two_adapters_and_their_names(self):
        boards = [self.board("--usb", "--serial-number", f"N{n}", "--product", f"Adapter {n}")
                  for n in (1, 2)]
        self.assertEqual(self.host(boards, """
for device in devices():
    d = device.contents.descriptor
    handle = usb.usb_open(device)
    print(hex(d.idVendor), hex(d.idProduct), text(handle, d.iSerialNumber), text(handle, d.iProduct),
          text(handle, 9))
    usb.usb_close(handle)
handle, result = claim(devices()[1])
print(result, write(handle, *START, 0x84, 7, 0x85, 0x5A), read(handle, 2))
"""), ["0x1209 0x3030 N1 Adapter 1 None", "0x1209 0x3030 N2 Adapter 2 None", "0 11 00b4"])
        for board in boards:
            self.expect(board.stop(), 0, err="")
            self.assertFalse(board.socket.exists())

    def test_transfers(self):
        board = self.board("--usb", "--once", "--fault", "late=4:300")
        self.assertEqual(self.host([board], """
handle, result = claim(devices()[0])
other, busy = claim(devices()[0])
print(busy < 0, usb.usb_strerror().decode(), usb.usb_bulk_write(other, 2, b"x", 1, 10) < 0)
usb.usb_close(other)
print(write(handle, 1, endpoint=1) < 0, read(handle, 4, 50))
write(handle, *START, 0x84, 7, 0x85, 0x5A, 0x85, 0x42, 0x85, 0x01)
print(read(handle, 3), read(handle, 64), read(handle, 64, 20))
print(usb.usb_reset(handle), usb.usb_release_interface(handle, 0), read(handle, 1))
"""), ["True Device or resource busy True", "True -110", "00b400 840002 -110", "0 0 -22"])
        self.expect(board.wait(), 0, err="")

    def test_a_pulled_cable_takes_the_adapter_away(self):
        board = self.board("--usb", "--fault", "cut=9")
        self.assertEqual(self.host([board], """
handle, result = claim(devices()[0])
print(write(handle, *START), write(handle, 0x84, 7, 0x85, 0x5A), usb.usb_strerror().decode())
print(read(handle, 2), len(devices()))
"""), ["7 -19 No such device", "-19 0"])
        self.expect(board.wait(), 0, err="")

    def test_a_socket_that_is_left_over_makes_room_and_a_served_one_does_not(self):
        first = self.board("--usb")
        second = self.run_program("vboard", "--usb", first.socket, timeout=20)
        self.expect(second, 1, out="", err=["Address already in use"])
        first.process.kill()
        first.process.wait()
        self.assertTrue(first.socket.exists())
        again = self.board("--usb", socket=first.socket)
        self.assertEqual(again.port, str(first.socket))
        self.expect(again.stop(), 0, err="")

    def test_garbage_on_the_socket_closes_only_its_connection(self):
        board = self.board("--usb")
        header = struct.Struct("=III")
        for message in (b"", b"x", header.pack(0, 0, 0)[:11], header.pack(3, 100, 0) + b"short",
                        header.pack(4, 0xFFFFFFFF, 0), header.pack(3, 70_000, 0) + bytes(70_000)):
            with socket.socket(socket.AF_UNIX, socket.SOCK_SEQPACKET) as client:
                client.settimeout(20)
                client.connect(str(board.socket))
                client.send(message)
                client.shutdown(socket.SHUT_WR)
                self.assertEqual(client.recv(100), b"")
        with socket.socket(socket.AF_UNIX, socket.SOCK_SEQPACKET) as client:
            client.settimeout(20)
            client.connect(str(board.socket))
            client.send(header.pack(99, 0, 0))
            self.assertLess(struct.unpack("=i", client.recv(100))[0], 0)
        self.assertEqual(len(self.host([board], "print(len(devices()))")), 1)
        self.expect(board.stop(), 0, err="")


if __name__ == "__main__":
    main()
