# SPDX-License-Identifier: MIT
#
# The page of `zeltrack view` in a real browser: view_test.py ZELTRACK DIRECTORY. Pages and screenshots stay in the
# directory, to be looked at. Keys, clicks and text are a user's; boxes and places are read from the script's variables.
import base64
import pathlib
import subprocess
import sys
import time
import unittest
import urllib.parse

SKIPPED = 77
try:
    import chromium
except ImportError:
    print("skipped: Debian's package python3-selenium is not installed")
    sys.exit(SKIPPED)

ARROW_RIGHT, ARROW_LEFT, HOME, END = "\ue014", "\ue012", "\ue011", "\ue010"

zeltrack = None
directory = None
browser = None


def synth(name, *options):
    path = directory / name
    subprocess.run([zeltrack, "synth", *options, "-o", path], check=True, stderr=subprocess.DEVNULL)
    return path


def view(detections, *options):
    page = detections.with_suffix(".html")
    subprocess.run([zeltrack, "view", "-q", detections.name, "-o", page.name, *options], check=True, cwd=directory)
    return page


def sample():
    truth = directory / "sample-truth.txt"
    detections = synth("sample.txt", "--objects=20", "--frames=300", "--seed=1", f"--gt={truth}")
    return detections, view(detections, "--gt", truth.name)


def open_page(page, fragment=""):
    browser.get("about:blank")  # else a new fragment alone would not load anything
    browser.get("file://" + urllib.parse.quote(str(page)) + fragment)
    settle()


def settle():
    browser.run("""
        return new Promise(done => {
          const look = () => document.body.classList.contains('loading') ? setTimeout(look, 10) :
            requestAnimationFrame(() => requestAnimationFrame(() => done(0)));
          look();
        })""")


def text(element):
    return browser.run("return byId(arguments[0]).innerText", element)


def place(element):
    script = "const r = byId(arguments[0]).getBoundingClientRect(); return [r.x, r.y, r.width, r.height]"
    return browser.run(script, element)


def fragment():
    time.sleep(0.3)  # a new frame is written there a little later
    return browser.run("return location.hash")


class ViewTest(unittest.TestCase):
    def tearDown(self):
        self.assertEqual(browser.messages(), [], "the console must stay empty")

    def wait_for(self, condition):
        for _ in range(100):
            if browser.run("return " + condition):
                return settle()
            time.sleep(0.1)
        self.fail("never: " + condition)

    def expect_frame(self, number, of):
        settle()
        self.assertEqual(text("frame"), f"Frame {number:,} of {of:,}")

    def test_steps_by_keyboard(self):
        _, page = sample()
        open_page(page)
        self.expect_frame(1, 300)
        right, left, end, home = (ARROW_RIGHT, False), (ARROW_LEFT, False), (END, False), (HOME, False)
        ten = (ARROW_RIGHT, True)
        for press, frame in [(right, 2), (ten, 12), (left, 11), (end, 300), (right, 300), (home, 1)]:
            browser.key(*press)
            self.expect_frame(frame, 300)
        self.assertEqual(fragment(), "#frame=1")

    def test_goes_from_event_to_event(self):
        _, page = sample()
        open_page(page, "#frame=100")
        seen = []
        for key, shift in [("m", False), ("m", True), ("b", False), ("e", False), ("b", True)]:
            browser.key(key, shift)
            settle()
            seen.append(fragment())
            self.assertIn({"m": "missed for the first time", "b": "started", "e": "removed"}[key], text("events"))
        self.assertEqual(len(set(seen)), len(seen))

    def test_plays_and_pauses(self):
        _, page = sample()
        open_page(page)
        browser.key(" ")
        for _ in range(50):
            time.sleep(0.1)
            if int(browser.run("return byId('slider').value")) > 5:
                break
        else:
            self.fail("nothing moves")
        self.assertEqual(text("play"), "Pause")
        browser.key(" ")
        settle()
        self.assertEqual(text("play"), "Play")
        paused = text("frame")
        time.sleep(0.2)
        self.assertEqual(text("frame"), paused)

    def test_click_on_a_life_selects_it(self):
        _, page = sample()
        open_page(page)
        left, top, width, _ = place("rows")
        browser.point(left + width / 2, top + 3 + 14 * 4 + 5, click=True)
        settle()
        self.assertIn("Track 5", text("inspector"))
        self.assertIn("Innovation", text("inspector"))
        self.assertRegex(fragment(), r"^#frame=1[45]\d&track=5$")
        wanted = fragment()
        open_page(page, wanted)
        self.assertEqual(fragment(), wanted)
        self.assertIn("Track 5", text("inspector"))

    def test_tells_the_reason_under_the_pointer(self):
        _, page = sample()
        open_page(page, "#frame=60")
        left, top, _, _ = place("scene")
        x, y = browser.run("""
            const [i] = detectionsAt(state.run, 60), {x, y} = state.run.detections;
            return [toX(x[i]), toY(y[i])]""")
        browser.point(left + x, top + y)
        settle()
        lines = [r"Detection \d+ · score 0\.\d+", r".* px from track \d+ \(gate .* px\), overlap 0\.\d+", r".*track"]
        self.assertRegex(text("tip"), "\n".join(lines))
        browser.key("d")
        settle()
        self.assertRegex(text("reason"), r"^(Took|Refused|Lost|Displaced|Too far|No track)")

    def test_zooms_and_hides_layers(self):
        _, page = sample()
        open_page(page)
        before = browser.run("return camera.zoom")
        left, top, width, height = place("zoom-in")
        browser.point(left + width / 2, top + height / 2, click=True)
        self.assertGreater(browser.run("return camera.zoom"), before)
        browser.key("0")
        self.assertEqual(browser.run("return camera.zoom"), before)
        browser.key("g")
        settle()
        self.assertFalse(browser.run("return byId('show-gates').checked"))

    def test_everything_can_be_reached_in_every_size(self):
        _, page = sample()
        for width, height in [(1440, 900), (1024, 600), (720, 450), (390, 844)]:
            with self.subTest(f"{width} x {height}"):
                browser.size(width, height)
                open_page(page, "#frame=160&track=12")
                self.assertEqual(browser.run("return document.documentElement.scrollWidth"), width)
                for part in ("play", "rows", "inspector", "scene", "slider"):
                    browser.run("byId(arguments[0]).scrollIntoView({block: 'center'})", part)
                    _, top, _, high = place(part)
                    self.assertTrue(high > 0 and -1 < top + high / 2 < height, f"{part} at {top}, {high} high")
                browser.run("scrollTo(0, 0)")
                browser.save_screenshot(str(directory / f"viewer-{width}.png"))
        browser.size(1280, 800)

    def test_the_inspector_keeps_focus_and_back_undoes_a_selection(self):
        _, page = sample()
        open_page(page, "#frame=100")
        browser.key("t")
        settle()
        first = fragment()
        browser.run("byId('inspector').querySelector('dl .link').focus()")
        browser.key(ARROW_RIGHT)
        settle()
        self.assertEqual(browser.run("return document.activeElement.className"), "link")
        browser.key("t")
        settle()
        self.assertNotIn(first.split("track=")[1] + "\n", fragment() + "\n")
        browser.back()
        settle()
        self.assertEqual(fragment().split("track=")[1], first.split("track=")[1])

    def test_tunes_the_tracker_and_prints_the_command(self):
        _, page = sample()
        open_page(page)
        if not browser.run("return canTune()"):
            self.skipTest("built without the module")
        before = text("size")
        browser.run("byId('tab-tune').click()")
        settle()
        left, top, width, height = place("tune-iou")
        browser.point(left + 0.8 * width, top + height / 2, click=True)
        self.wait_for("state.run.parameters.iou > 0.7")
        self.assertNotEqual(text("size"), before)
        words = text("setting").split()
        tracked = subprocess.run([zeltrack, *words[1:]], check=True, cwd=directory, stdout=subprocess.PIPE,
                                 stderr=subprocess.DEVNULL, text=True).stdout
        identifiers = {line.split(",")[1] for line in tracked.splitlines()}
        self.assertEqual(len(identifiers), browser.run("return state.run.figures.get('tracks')"))
        browser.run("byId('tune-stable-sweep').click()")
        self.wait_for("sweepOf().points.length > 10")
        browser.save_screenshot(str(directory / "viewer-tune.png"))
        browser.run("byId('tune-undo').click()")
        self.wait_for("state.run === writtenRun()")
        self.assertEqual(text("size"), before)

    def test_finds_compares_and_shows_objects(self):
        _, page = sample()
        open_page(page, "#frame=50")
        browser.key("/")
        browser.key("object 4\ue007")
        settle()
        self.assertIn("True object 4", text("inspector"))
        self.assertIn("Followed", text("inspector"))
        self.assertRegex(fragment(), "&object=4$")
        browser.run("byId('lane-kind').value = 'objects'; byId('lane-kind').onchange()")
        browser.run("byId('tab-tables').click()")
        settle()
        self.assertRegex(text("tables"), r"track .*\n1\t")
        if not browser.run("return canTune()"):
            return
        browser.run("pin(); set({stable: 6})")
        self.wait_for("state.run.parameters.stable === 6")
        self.assertRegex(text("compared"), "(?i)they differ in [1-9]")
        browser.save_screenshot(str(directory / "viewer-compare.png"))

    def test_shows_pictures_beneath_and_saves_the_scene_without(self):
        detections, _ = sample()
        folder = directory / "pictures of it" / "img1"
        folder.mkdir(parents=True, exist_ok=True)
        pixel = "R0lGODlhAQABAIAAAP8AAAAAACH5BAAAAAAALAAAAAABAAEAAAICRAEAOw=="
        for number in (1, 2):
            (folder / f"{number:06d}.gif").write_bytes(base64.b64decode(pixel))
        page = view(detections, "--images", str(folder.parent))
        open_page(page)
        self.wait_for("pictureOf(1).naturalWidth === 1")
        self.assertEqual(browser.run("return [extent.w, extent.h]"), [1, 1])
        saved = """
            const canvas = document.createElement('canvas');
            drawScene(canvas, true);
            return canvas.toDataURL().slice(0, 21)"""
        self.assertEqual(browser.run(saved), "data:image/png;base64")

    def test_takes_screenshots_in_both_themes(self):
        _, page = sample()
        for theme in ("light", "dark"):
            browser.theme(theme)
            open_page(page, "#frame=160&track=12")
            browser.save_screenshot(str(directory / f"viewer-{theme}.png"))
        browser.theme("light")

    def test_the_network_is_out_of_reach(self):
        _, page = sample()
        open_page(page)
        blocked = browser.run("""
            return new Promise(done => {
              addEventListener('securitypolicyviolation', e => done(e.violatedDirective));
              fetch('http://127.0.0.1:9/').catch(() => 0);
            })""")
        self.assertEqual(blocked, "connect-src")
        self.assertIn("Content Security Policy", browser.messages()[0])

    def test_odd_sequences(self):
        empty = directory / "empty.txt"
        empty.write_text("")
        single = directory / "single.txt"
        single.write_text("1,-1,10,20,30,40,0.9\n")
        hostile = directory / "<script>alert('x')<" "&.txt"
        hostile.write_text("1,-1,10,20,30,40,0.9\n3,-1,11,20,30,40,0.9\n")
        long = synth("long.txt", "--objects=10", "--frames=10000")
        for path, frames in [(empty, 0), (single, 1), (hostile, 3), (long, 10000)]:
            with self.subTest(path.name):
                open_page(view(path))
                self.assertEqual(text("name"), path.name)
                self.assertIn(path.name.replace("'", "'\\''"), text("command"))
                for key in (END, ARROW_LEFT, ARROW_RIGHT, "b", "d", "t", "\ue00c"):
                    browser.key(key)
                browser.key(END)
                settle()
                self.assertEqual(text("frame"), f"Frame {frames:,} of {frames:,}" if frames else "No frames")
                left, top, width, _ = place("rows")
                browser.point(left + width / 2, top + 8, click=True)
                settle()
                browser.save_screenshot(str(directory / f"odd-{frames}.png"))


if __name__ == "__main__":
    zeltrack, directory = sys.argv[1], pathlib.Path(sys.argv[2]).resolve()
    if not all(chromium.installed()):
        print("skipped: Debian's packages chromium and chromium-driver are not installed")
        sys.exit(SKIPPED)
    with chromium.Browser(1280, 800) as browser:
        done = unittest.main(argv=sys.argv[:1] + sys.argv[3:], exit=False, verbosity=2)
    sys.exit(not done.result.wasSuccessful())
