"""The client library: several boxes at once, claims, events, and arguments that it refuses."""

from client import ClientCase
from harness import main


class Library(ClientCase):
    def test_as_its_users_have_it(self):
        self.start_shared()
        probe = self.begin(f"exec $LIBRARY_PROBE {self.name}")
        self.assertEqual(probe.stdout.readline(), b"asked\n")
        for title, key, said in (("second", "Escape", b"second is answered\n"), ("first", "Return", b"done\n")):
            window = self.screen.window(title)
            self.screen.xdotool(f"windowfocus --sync {window.id} key {key}")
            self.assertEqual(probe.stdout.readline(), said)
        self.assertEqual(probe.communicate(), (b"", b""))


if __name__ == "__main__":
    main()
