"""The serial adapter's port, as a session leaves it when it fails: attributes as before, and unlocked."""
import contextlib
import fcntl
import os
import pty
import termios
import threading

from harness import SessionTest, main


class SerialPort(SessionTest):
    def setUp(self):
        super().setUp()
        self.image = self.write("app.hex", ":0400000001020304F2\n:00000001FF\n")
        self.adapter, self.slave = pty.openpty()
        self.addCleanup(self.unplug)
        self.port = os.ttyname(self.slave)

    def unplug(self):
        os.close(self.slave)
        os.close(self.adapter)

    def session(self, port):
        return self.qburn("-target", "serial_jtag", "-setprop", f"Port Name={port}", self.image)

    def test_silent_adapter_leaves_the_port_as_it_was(self):
        before = termios.tcgetattr(self.slave)
        self.expect(self.session(self.port), 1, out="", err=[
            "error: Can't establish communications with the JTAG adapter (no echo response #1)\n"])
        self.assertEqual(os.read(self.adapter, 100), b"\r")
        self.assertEqual(termios.tcgetattr(self.slave), before)
        fcntl.flock(self.slave, fcntl.LOCK_EX | fcntl.LOCK_NB)

    def test_adapter_without_a_target_is_given_back(self):
        """The session fails after the port was opened: the process ends with a link, and puts it back."""
        before = termios.tcgetattr(self.slave)

        def adapter():
            received = b""
            with contextlib.suppress(OSError):  # the port hangs up when the session is over
                while True:
                    received += os.read(self.adapter, 1)
                    if received in (b"\r", b"\r\r"):
                        os.write(self.adapter, b">")
                    elif received.endswith(b"Z\r\0\5\0\4"):
                        os.write(self.adapter, b"Z\r\n\5\4")
                        received = b"binary"
                    elif received.startswith(b"binary") and len(received) == 8:
                        # Commands are echoed; scans answer zeros.
                        os.write(self.adapter, received[7:] if received[6] == 0 else b"\0\0")
                        received = b"binary"

        threading.Thread(target=adapter, daemon=True).start()
        result = self.session(self.port)
        # The tool waits a tenth of a second for the prompt, and a busy machine may keep this adapter longer.
        self.assertRegex(result.err, r"\Aerror: (The JTAG interface is not responding - Check the JTAG connections and "
                                     r"that the target is powered|Can't establish communications .*)\n\n\Z")
        self.assertEqual(result.status, 1)
        self.assertEqual(termios.tcgetattr(self.slave), before)


if __name__ == "__main__":
    main()
