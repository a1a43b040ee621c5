"""Words in the user's language, on a machine that need not have its locale."""

from client import ClientCase
from harness import main, until

VARIABLES = ("LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG")
# The locale as it is set, and the caption of a bar that has none.
CAPTIONS = (
    ("", "Progress"), ("LANG=C", "Progress"), ("LANG=C.UTF-8", "Progress"), ("LANG=en_GB.UTF-8", "Progress"),
    ("LANG=tlh_XX.UTF-8", "Progress"), ("LC_ALL=C LANG=de_DE.UTF-8 LANGUAGE=de", "Progress"),
    ("LC_MESSAGES=POSIX LANG=de_DE.UTF-8", "Progress"), ("LANG=de_DE.UTF-8 LANGUAGE=en:de", "Progress"),
    ("LANG=C.UTF-8 LANGUAGE=C", "Progress"),
    ("LANG=de_AT.UTF-8", "Fortschritt"), ("LANG=de_DE", "Fortschritt"), ("LANGUAGE=de", "Fortschritt"),
    ("LANG=C.UTF-8 LANGUAGE=ru:de", "Ход выполнения"), ("LANG=de_DE.UTF-8 LC_MESSAGES=ja_JP.UTF-8", "進行状況"),
    ("LC_MESSAGES=ja_JP.UTF-8 LC_ALL=pl_PL.UTF-8", "Postęp"), ("LANG=en_US.UTF-8 LANGUAGE=tlh:pt_BR:en", "Progresso"),
    ("LANG=zh_CN.UTF-8", "进度"), ("LANG=ar_EG.UTF-8", "التقدم"),
)


class Languages(ClientCase):
    def setUp(self):
        super().setUp()
        self.environment = {name: value for name, value in self.environment.items() if name not in VARIABLES}

    def test_are_chosen(self):
        for variables, caption in CAPTIONS:
            with self.subTest(variables):
                result = self.run_script(f"echo 50 | env {variables} progressctl pipe --terminal")
                self.assertEqual({line[5:] for line in result.errors.splitlines()}, {caption})

    def test_are_the_daemons(self):
        """A box is answered by the letter that is underlined, and the fitted window reads otherwise."""
        pictures = []
        for variables, key in (("LC_ALL=C LANGUAGE=de", "alt+y"), ("LANG=C", "alt+y"), ("LANG=de_DE.UTF-8", "alt+j")):
            with self.subTest(variables):
                self.assertEqual(self.run_script(f"env {variables} progressctl start --layout fitted").status, 0)
                asking = self.begin("progressctl ask --title Copy Overwrite? no yes")
                self.screen.press(key, "Copy")
                self.assertEqual((asking.communicate()[0], asking.returncode), (b"yes\n", 0))
                self.ctl("configure 'busyIndicator=0|0|1|1|empty'")
                self.ctl("bar 0 Copy")
                area = self.screen.window(self.name).area
                until(lambda: len(self.screen.picture().colours(area)) > 20, "the texts")
                pictures.append(self.screen.settled().bytes)
                self.assertEqual(self.ctl("stop").status, 0)
        english, same, german = pictures
        self.assertEqual(english, same)
        self.assertNotEqual(english, german)


if __name__ == "__main__":
    main()
