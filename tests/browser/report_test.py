# SPDX-License-Identifier: MIT
#
# The report of `zeltrack tune` in a real browser: report_test.py ZELTRACK DIRECTORY. The page and a screenshot stay in
# the directory, to be looked at.
import pathlib
import subprocess
import sys
import unittest

SKIPPED = 77
try:
    import chromium
except ImportError:
    print("skipped: Debian's package python3-selenium is not installed")
    sys.exit(SKIPPED)

zeltrack = None
directory = None
browser = None


def report():
    """Of a search over three made-up sequences, one with a name that would end an element."""
    detections, truth = directory / "tune-detections", directory / "tune-truth"
    for folder in (detections, truth):
        folder.mkdir(exist_ok=True)
    for seed, name in enumerate(("a", "b", "c <!--<script>"), 1):
        subprocess.run([zeltrack, "synth", "--objects=4", "--frames=60", f"--seed={seed}", "--gt", truth / f"{name}.txt",
                        "-o", detections / f"{name}.txt"], check=True, stderr=subprocess.DEVNULL)
    page = directory / "tune.html"
    subprocess.run([zeltrack, "tune", "-q", detections, "--gt", truth, "--trials=40", "--report", page], check=True,
                   stdout=subprocess.DEVNULL)
    return page


class ReportTest(unittest.TestCase):
    def setUp(self):
        browser.get("file://" + str(report()))

    def tearDown(self):
        self.assertEqual(browser.messages(), [], "the console must stay empty")

    def test_shows_every_trial_and_table(self):
        self.assertIn("Held out", browser.run("return document.getElementById('facts').textContent"))
        rows = browser.run("return ['options', 'sequences', 'ranking'].map(id => "
                           "document.querySelectorAll('#' + id + ' tbody tr').length)")
        self.assertEqual(rows, [6, 3, 10])
        self.assertIn("c <!--<script>", browser.run("return document.getElementById('sequences').textContent"))
        drawn = browser.run("""return [...document.querySelectorAll('canvas')].map(canvas =>
            canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height).data.some(byte => byte > 0))""")
        self.assertEqual(drawn, [True] * 7)
        for theme in ("light", "dark"):
            browser.theme(theme)
            browser.save_screenshot(str(directory / f"tune-{theme}.png"))
        browser.theme("light")

    def test_tells_of_the_trial_under_the_pointer(self):
        x, y = browser.run("""
            const canvas = document.querySelector('#charts canvas'), {left, top} = canvas.getBoundingClientRect();
            const at = layout(data.parameters[0], 0, range, canvas.parentElement.clientWidth), best = data.trials[0];
            return [left + at.x(best), top + at.y(best.objective)]""")
        browser.point(x, y)
        self.assertRegex(browser.run("return document.getElementById('trial').textContent"), r"^\d+\.\d\d: trial \d+ of")

    def test_fits_a_narrow_window(self):
        browser.size(390, 844)
        browser.run("return new Promise(done => requestAnimationFrame(() => requestAnimationFrame(() => done(0))))")
        self.assertEqual(browser.run("return document.documentElement.scrollWidth"), 390)
        browser.size(1280, 800)


if __name__ == "__main__":
    zeltrack, directory = sys.argv[1], pathlib.Path(sys.argv[2]).resolve()
    if not all(chromium.installed()):
        print("skipped: Debian's packages chromium and chromium-driver are not installed")
        sys.exit(SKIPPED)
    directory.mkdir(parents=True, exist_ok=True)
    with chromium.Browser(1280, 800) as browser:
        done = unittest.main(argv=sys.argv[:1], exit=False, verbosity=2)
    sys.exit(not done.result.wasSuccessful())
