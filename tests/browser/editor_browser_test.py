#!/usr/bin/env python3
"""The editor page in a real browser: headless Chromium driven by Selenium
against `slabber edit` on a copy of the sample session.

A user's work is done through the page (mouse drags on the photo, the image
table, the set-depths dialog, the buttons) and checked against the state the
program holds (GET /api/state) and the session file it saves.

Exit status 77 (skipped) when Chromium, its driver or Selenium cannot be
started here, with the reason; 0 when every test passed.
"""
import argparse
import json
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest
import urllib.request

ARGS = None
SKIP = 77


def start_browser():
    from selenium import webdriver
    from selenium.webdriver.chrome.options import Options
    from selenium.webdriver.chrome.service import Service

    options = Options()
    for a in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
              "--window-size=1400,950", "--force-device-scale-factor=1"):
        options.add_argument(a)
    chromium = shutil.which("chromium") or shutil.which("chromium-browser")
    if chromium:
        options.binary_location = chromium
    driver = shutil.which("chromedriver") or "/usr/bin/chromedriver"
    return webdriver.Chrome(service=Service(driver), options=options)


class Editor:
    """`slabber edit` on a session, with its address."""

    def __init__(self, session):
        self.out = open(session + ".out", "w+")
        self.process = subprocess.Popen([ARGS.slabber, "edit", session], stdout=self.out,
                                        stderr=subprocess.STDOUT, text=True)
        for _ in range(500):
            self.out.seek(0)
            m = re.search(r"http://127\.0\.0\.1:(\d+)/\?token=([0-9a-f]{32})", self.out.read())
            if m:
                self.address, self.port, self.token = m.group(0), int(m.group(1)), m.group(2)
                return
            time.sleep(0.01)
        raise RuntimeError("slabber edit printed no address")

    def state(self):
        request = urllib.request.Request(f"http://127.0.0.1:{self.port}/api/state",
                                          headers={"X-Slabber-Token": self.token})
        with urllib.request.urlopen(request) as r:
            return json.load(r)

    def post(self, action, body):
        request = urllib.request.Request(f"http://127.0.0.1:{self.port}/api/{action}", data=json.dumps(body).encode(),
                                         headers={"X-Slabber-Token": self.token, "Content-Type": "application/json"})
        with urllib.request.urlopen(request) as r:
            return json.load(r)

    def stop(self):
        self.process.send_signal(signal.SIGINT)
        code = self.process.wait(timeout=20)
        self.out.close()
        return code


class EditorPage(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.browser = start_browser()

    @classmethod
    def tearDownClass(cls):
        cls.browser.quit()

    def setUp(self):
        self.dir = tempfile.mkdtemp(prefix="slabber-browser-")
        for name in os.listdir(ARGS.samples):
            if name.endswith((".jpg", ".slbs")):
                shutil.copy(os.path.join(ARGS.samples, name), self.dir)
        os.environ["SUBSURF_USERLIB"] = os.path.join(self.dir, "userlib")
        self.session = os.path.join(self.dir, "sample.slbs")
        self.editor = Editor(self.session)
        self.browser.get(self.editor.address)
        self.wait_for(lambda: len(self.table_rows()) == 3, "the image table")
        self.wait_for(lambda: self.browser.execute_script("return view !== null && current() !== null"), "the photo")

    def tearDown(self):
        self.browser.execute_script("window.onbeforeunload = null; state = null;")
        self.editor.stop()
        shutil.rmtree(self.dir, ignore_errors=True)

    # --- helpers -----------------------------------------------------------
    def wait_for(self, condition, what, seconds=10):
        end = time.time() + seconds
        while time.time() < end:
            try:
                if condition():
                    return
            except Exception:  # the page is still being redrawn
                pass
            time.sleep(0.05)
        self.screenshot("failed-" + self.id().split(".")[-1])
        self.fail("timed out waiting for " + what)

    def by_id(self, element_id):
        from selenium.webdriver.common.by import By
        return self.browser.find_element(By.ID, element_id)

    def table_rows(self):
        from selenium.webdriver.common.by import By
        return self.browser.find_elements(By.CSS_SELECTOR, "#images tbody tr")

    def messages(self):
        from selenium.webdriver.common.by import By
        return [e.text for e in self.browser.find_elements(By.CSS_SELECTOR, "#messages .message span")]

    def dismiss_messages(self):
        self.browser.execute_script("document.getElementById('messages').textContent = ''")

    def screenshot(self, name):
        if ARGS.screenshots:
            os.makedirs(ARGS.screenshots, exist_ok=True)
            self.browser.save_screenshot(os.path.join(ARGS.screenshots, name + ".png"))

    def screen_point(self, x, y):
        """Where frame point (x, y) of the current photo is, from the canvas's top-left."""
        return self.browser.execute_script("return toScreen(arguments[0], arguments[1])", x, y)

    def drag_on_photo(self, start, end):
        """Drags with the left button from frame point start to frame point end."""
        from selenium.webdriver.common.action_chains import ActionChains
        canvas = self.by_id("photo")
        size = canvas.size
        (x0, y0), (x1, y1) = self.screen_point(*start), self.screen_point(*end)
        # ActionChains offsets are from the element's centre.
        cx, cy = size["width"] / 2, size["height"] / 2
        chain = ActionChains(self.browser)
        chain.move_to_element_with_offset(canvas, int(x0 - cx), int(y0 - cy)).click_and_hold()
        chain.move_by_offset(int((x1 - x0) / 2), int((y1 - y0) / 2))
        chain.move_by_offset(int(x1 - x0) - int((x1 - x0) / 2), int(y1 - y0) - int((y1 - y0) / 2))
        chain.release().perform()

    def edit_cell(self, place, column, text):
        from selenium.webdriver.common.by import By
        from selenium.webdriver.common.keys import Keys
        cell = self.table_rows()[place - 1].find_element(By.CSS_SELECTOR, f'input[data-column="{column}"]')
        cell.send_keys(Keys.CONTROL, "a")
        cell.send_keys(text, Keys.TAB)

    def set_depths(self, image, top, base, cores):
        from selenium.webdriver.support.ui import Select
        self.by_id("open-depths").click()
        dialog = self.by_id("cor_set-depths")
        self.assertTrue(dialog.is_displayed())
        Select(self.by_id("depths-image")).select_by_value(str(image))
        for field, value in (("depths-top", top), ("depths-base", base), ("depths-cores", cores)):
            self.by_id(field).clear()
            if value != "":
                self.by_id(field).send_keys(str(value))
        self.by_id("depths-ok").click()

    def cell_value(self, place, column):
        from selenium.webdriver.common.by import By
        return self.table_rows()[place - 1].find_element(By.CSS_SELECTOR, f'input[data-column="{column}"]').get_attribute("value")

    # --- tests -------------------------------------------------------------
    def test_loads_the_session(self):
        from selenium.webdriver.common.by import By
        headings = [th.text for th in self.browser.find_elements(By.CSS_SELECTOR, "#images thead th")]
        self.assertEqual(headings, ["Source", "Path", "Filename", "UV", "Top", "Base", "Core Length", "Tray Length",
                                    "Angle", "Use", "View"])
        self.assertEqual(self.table_rows()[0].text.split()[0], "1")
        self.assertIn("TRAY_1234_5-1239_5.jpg", self.table_rows()[0].text)
        self.assertEqual(self.cell_value(2, "Top"), "1239.50")
        self.assertEqual(self.by_id("save-state").text, "All changes saved")
        self.assertEqual(len(self.browser.find_elements(By.CSS_SELECTOR, "#rows tbody tr")), 5)
        # The photo is drawn once its reduced image has come (slower under the
        # sanitizers): then the canvas is not blank where the tray is.
        def painted():
            return self.browser.execute_script(
                "const [x, y] = toScreen(1200, 800); const r = window.devicePixelRatio || 1;"
                "return Array.from(ctx.getImageData(x * r, y * r, 1, 1).data)")
        self.wait_for(lambda: painted() != [0, 0, 0, 0], "the photo to be drawn")
        self.screenshot("loaded")

    def test_zoomed_in_the_photo_comes_in_full_resolution_tiles(self):
        for _ in range(6):
            self.by_id("zoom-in").click()
        self.wait_for(lambda: self.browser.execute_script(
            "return [...pictures.entries()].some(([k, img]) => k.startsWith('tile/1/0/') && img.complete && img.naturalWidth === 512)"),
            "full-resolution tiles")
        # Zoom and pan are saved with the session as the photo's view.
        self.wait_for(lambda: self.editor.state()["images"][0]["View"] == 1, "the view kept", 5)
        view = self.editor.state()["images"][0]["views"][0]
        self.assertLess(view["x2"] - view["x1"], 2400 / 2)
        self.screenshot("zoomed")

    def test_draw_a_rectangle(self):
        from selenium.webdriver.common.by import By
        self.table_rows()[2].find_elements(By.TAG_NAME, "td")[2].click()
        self.wait_for(lambda: self.editor.state()["current"]["image"] == 3, "image 3 selected")
        self.wait_for(lambda: self.browser.execute_script("return view.place") == 3, "image 3 shown")
        # Remove the last row, then draw it again a little higher.
        self.browser.find_elements(By.CSS_SELECTOR, "#rows tbody tr")[4].find_element(By.CSS_SELECTOR, "button[title='Delete this row']").click()
        self.wait_for(lambda: len(self.editor.state()["images"][2]["rows"]) == 4, "row 5 deleted")
        self.wait_for(lambda: len(self.browser.find_elements(By.CSS_SELECTOR, "#rows tbody tr")) == 4, "the page without row 5")
        self.drag_on_photo((130, 1290), (2240, 1500))
        self.wait_for(lambda: len(self.editor.state()["images"][2]["rows"]) == 5, "a fifth row drawn")
        corners = self.editor.state()["images"][2]["rows"][4]["corners"]
        self.assertEqual(len(corners), 4)
        for (x, y), (ex, ey) in zip(corners, [(130, 1290), (2240, 1290), (2240, 1500), (130, 1500)]):
            self.assertLessEqual(abs(x - ex), 6)
            self.assertLessEqual(abs(y - ey), 6)
        self.assertEqual(corners[0][1], corners[1][1], "drawn as a rectangle")
        self.assertEqual(self.editor.state()["current"], {"image": 3, "rectangle": 5})
        self.assertEqual(self.by_id("save-state").text, "● Unsaved changes")
        self.screenshot("drawn")

    def test_drag_a_corner_moves_the_neighbours(self):
        before = self.editor.state()["images"][0]["rows"][0]["corners"]
        self.assertEqual(before, [[119, 347], [2251, 347], [2251, 516], [119, 516]])
        self.drag_on_photo((2251, 516), (2150, 560))
        self.wait_for(lambda: self.by_id("save-state").text == "● Unsaved changes", "the page shows the edit")
        self.wait_for(lambda: self.editor.state()["images"][0]["rows"][0]["corners"] != before, "the corner moved")
        (x1, y1), (x2, y2), (x3, y3), (x4, y4) = self.editor.state()["images"][0]["rows"][0]["corners"]
        self.assertEqual((x1, y1), (119, 347), "the opposite corner stays")
        self.assertLessEqual(abs(x3 - 2150), 6)
        self.assertLessEqual(abs(y3 - 560), 6)
        self.assertEqual((x2, y2), (x3, 347), "corner 2 took the new x")
        self.assertEqual((x4, y4), (119, y3), "corner 4 took the new y")
        # Undo puts it back; redo again.
        # The page may draw the program's answer a little after the program holds it.
        self.wait_for(lambda: self.by_id("undo").is_enabled(), "Undo offered")
        self.by_id("undo").click()
        self.wait_for(lambda: self.editor.state()["images"][0]["rows"][0]["corners"] == before, "undone")
        self.wait_for(lambda: self.by_id("save-state").text == "All changes saved", "nothing unsaved")
        self.wait_for(lambda: self.by_id("redo").is_enabled(), "Redo offered")
        self.by_id("redo").click()
        self.wait_for(lambda: self.editor.state()["images"][0]["rows"][0]["corners"] != before, "redone")
        self.screenshot("corner")

    def test_free_corners_move_one_at_a_time(self):
        rows = lambda: self.editor.state()["images"][0]["rows"]
        before = rows()[0]["corners"]
        self.assertEqual(before, [[119, 347], [2251, 347], [2251, 516], [119, 516]])
        self.assertFalse(rows()[0]["free"])
        # Select row 1 by a click inside it; the button offers free corners.
        self.drag_on_photo((1200, 430), (1200, 430))
        self.wait_for(lambda: self.editor.state()["current"]["rectangle"] == 1, "row 1 selected")
        self.wait_for(lambda: self.by_id("free-corners").is_enabled(), "the button offered")
        self.assertEqual(self.by_id("free-corners").text, "Free corners")
        self.by_id("free-corners").click()
        self.wait_for(lambda: rows()[0]["free"], "row 1 free-cornered")
        self.wait_for(lambda: self.by_id("free-corners").text == "Square", "the button offers squaring")
        self.assertEqual(rows()[0]["corners"], before, "the corners stay where they were")
        # Corner 3 dragged: it alone moves.
        self.drag_on_photo((2251, 516), (2200, 560))
        self.wait_for(lambda: rows()[0]["corners"][2] != [2251, 516], "corner 3 moved")
        (x1, y1), (x2, y2), (x3, y3), (x4, y4) = rows()[0]["corners"]
        self.assertEqual([[x1, y1], [x2, y2], [x4, y4]], [before[0], before[1], before[3]], "the other corners stay")
        self.assertLessEqual(abs(x3 - 2200), 6)
        self.assertLessEqual(abs(y3 - 560), 6)
        # The top edge dragged up: both its ends move with it, the others stay.
        self.drag_on_photo((1200, 347), (1200, 320))
        self.wait_for(lambda: rows()[0]["corners"][0][1] != 347, "the top edge moved")
        corners = rows()[0]["corners"]
        self.assertLessEqual(abs(corners[0][1] - 320), 6)
        self.assertEqual(corners[0][1], corners[1][1], "both ends of the edge by the same amount")
        self.assertEqual(corners[2], [x3, y3])
        self.screenshot("free-corners")
        # Square: the upright box round the corners.
        self.by_id("free-corners").click()
        self.wait_for(lambda: not rows()[0]["free"], "row 1 upright again")
        (l, t), (r, t2), (r2, b), (l2, b2) = rows()[0]["corners"]
        self.assertEqual((l, t, r, b), (119, corners[0][1], 2251, y3))
        self.assertEqual((t2, r2, l2, b2), (t, r, l, b))

    def test_set_depths_carries_forward_into_the_table(self):
        self.set_depths(1, 2000, 2005, 5)
        self.wait_for(lambda: self.cell_value(3, "Top") == "2010.00", "image 3 at 2010")
        self.assertFalse(self.by_id("cor_set-depths").is_displayed(), "OK closes the dialog")
        self.assertEqual(self.cell_value(2, "Base"), "2010.00")
        self.assertEqual(self.cell_value(1, "Core Length"), "1.00")
        self.assertEqual(self.messages(), [])
        self.screenshot("depths")

    def test_each_message_is_shown(self):
        self.edit_cell(1, "Top", "1241")
        self.wait_for(lambda: "Error - Top depth >= Base Depth!" in self.messages(), "the error")
        self.dismiss_messages()
        self.edit_cell(1, "Top", "1220")
        self.wait_for(lambda: "Warning - more than 10 cores in tray!" in self.messages(), "the warning")
        self.dismiss_messages()
        self.set_depths(0, 1, 2, 5)
        self.wait_for(lambda: "Select a starting image!" in self.messages(), "no starting image")
        self.by_id("depths-close").click()
        self.dismiss_messages()
        self.by_id("template-save").click()
        self.wait_for(lambda: "Rectangle template must be given a name!" in self.messages(), "the template name")
        self.screenshot("messages")

    def test_the_yes_no_question(self):
        self.set_depths(2, 3000, 3004, "")
        self.wait_for(lambda: self.by_id("question").is_displayed(), "the question")
        self.assertEqual(self.by_id("question-text").text, "#Cores not set, use 5?")
        self.screenshot("question")
        self.by_id("question-no").click()
        self.wait_for(lambda: not self.by_id("question").is_displayed(), "the question closed")
        self.assertEqual(self.editor.state()["images"][1]["Top"], 1239.5, "no: nothing changed")
        self.by_id("depths-ok").click()
        self.wait_for(lambda: self.by_id("question").is_displayed(), "the question again")
        self.by_id("question-yes").click()
        self.wait_for(lambda: self.cell_value(3, "Top") == "3004.00", "carried forward with 5 cores")
        self.assertEqual(self.editor.state()["images"][1]["Core Number"], 5)

    def test_save_writes_what_the_engine_writes(self):
        self.drag_on_photo((2251, 516), (2100, 540))
        self.wait_for(lambda: self.by_id("save-state").text == "● Unsaved changes", "an edit")
        self.set_depths(1, 500, 505, 5)
        self.wait_for(lambda: self.cell_value(3, "Top") == "510.00", "depths carried")
        with open(self.session) as f:
            before = f.read()
        self.by_id("save").click()
        self.wait_for(lambda: self.by_id("save-state").text == "All changes saved", "saved")
        self.assertIn("Saved " + self.session, self.messages())
        with open(self.session) as f:
            saved = f.read()
        self.assertNotEqual(saved, before)
        shown = self.editor.state()
        # The engine reading the file back holds what the page showed, and
        # saving it again writes the same bytes.
        again = Editor(self.session)
        try:
            read = again.state()
            for a, b in zip(shown["images"], read["images"]):
                self.assertEqual(a["rows"], b["rows"])
                for column in ("Top", "Base", "Core Length", "Tray Length", "UV", "Use", "Core Number"):
                    self.assertEqual(a[column], b[column], column)
            again.post("save", {})
            with open(self.session) as f:
                self.assertEqual(f.read(), saved)
        finally:
            self.assertEqual(again.stop(), 0)
        self.assertEqual(sorted(f for f in os.listdir(self.dir) if not f.endswith(".out")),
                         ["TRAY_1234_5-1239_5.jpg", "TRAY_1239_5-1244_5.jpg", "TRAY_1244_5-1249_5.jpg", "sample.slbs"])
        self.screenshot("saved")

    def test_rows_copied_to_all_following_photos(self):
        from selenium.webdriver.support.ui import Select
        self.drag_on_photo((2251, 516), (2000, 530))
        self.wait_for(lambda: self.by_id("save-state").text == "● Unsaved changes", "an edit")
        Select(self.by_id("copy-count")).select_by_value("0")
        self.by_id("copy-rows").click()
        self.wait_for(lambda: self.editor.state()["images"][2]["rows"][0]["corners"][2][0] == 2000, "rows on photo 3")
        rows = [image["rows"] for image in self.editor.state()["images"]]
        self.assertEqual([r["corners"] for r in rows[1]], [r["corners"] for r in rows[0]])

    def test_detect_rows_flags_a_photo_to_check(self):
        from selenium.webdriver.common.by import By
        image = lambda: self.editor.state()["images"][0]
        drawn = image()["rows"]
        # A sure reading: rows laid, the summary shown, nothing to check.
        self.by_id("detect-rows").click()
        self.wait_for(lambda: image()["verdict"].startswith("rows found"), "rows found")
        self.wait_for(lambda: any(m.startswith("TRAY_1234_5-1239_5.jpg: 5 rows across, confidence ") for m in self.messages()),
                      "the summary")
        self.assertEqual(len(image()["rows"]), 5)
        self.assertFalse(self.by_id("check-rows").is_displayed())
        self.assertEqual(self.browser.find_elements(By.CSS_SELECTOR, "#images .check-rows"), [])
        self.by_id("undo").click()
        self.wait_for(lambda: image()["rows"] == drawn and image()["verdict"] == "", "undone")
        # The tray said to hold 9 rows: the rows found are doubted and flagged.
        self.dismiss_messages()
        self.set_depths(1, 1234.5, 1239.5, 9)
        self.wait_for(lambda: image()["Core Number"] == 9, "9 cores")
        self.wait_for(lambda: self.by_id("detect-rows").is_enabled(), "the button offered")
        self.by_id("detect-rows").click()
        self.wait_for(lambda: image()["checkRows"], "the rows doubted")
        verdict = image()["verdict"]
        self.assertRegex(verdict, r"^check the rows 0\.\d\d: found \d+ rows, expected 9$")
        self.wait_for(lambda: self.by_id("check-rows").is_displayed(), "the note on the photo")
        self.assertEqual(self.by_id("check-rows").text, "! " + verdict)
        note = self.table_rows()[0].find_element(By.CSS_SELECTOR, ".check-rows")
        self.assertEqual(note.text, "check the rows")
        self.assertEqual(note.get_attribute("title"), verdict)
        self.assertEqual(len(self.table_rows()[1].find_elements(By.CSS_SELECTOR, ".check-rows")), 0)
        self.wait_for(lambda: any(m.startswith("check the rows of TRAY_1234_5-1239_5.jpg (confidence ") for m in self.messages()),
                      "the verdict message")
        shown = self.browser.find_elements(By.CSS_SELECTOR, "#messages .message.error span")
        self.assertTrue(any(e.text.endswith(" rows, expected 9)") for e in shown), [e.text for e in shown])
        self.screenshot("detect-check")
        # Deleting a row is a person's look: the note goes.
        self.browser.find_elements(By.CSS_SELECTOR, "#rows tbody tr")[-1].find_element(
            By.CSS_SELECTOR, "button[title='Delete this row']").click()
        self.wait_for(lambda: image()["verdict"] == "rows checked by hand", "the rows checked")
        self.wait_for(lambda: not self.by_id("check-rows").is_displayed(), "the note gone")
        self.assertEqual(self.browser.find_elements(By.CSS_SELECTOR, "#images .check-rows"), [])

    def test_split_shows_progress_and_summary(self):
        self.by_id("split").click()
        self.wait_for(lambda: "15 of 15 rows written from 3 photos" in self.by_id("split-text").text, "the summary", 60)
        self.assertEqual(len([f for f in os.listdir(os.path.join(self.dir, "sample_rows")) if f.endswith(".bmp")]), 15)
        self.screenshot("split")


def main():
    global ARGS
    parser = argparse.ArgumentParser()
    parser.add_argument("--slabber", required=True)
    parser.add_argument("--samples", required=True)
    parser.add_argument("--screenshots", default="")
    ARGS, rest = parser.parse_known_args()
    try:
        import selenium  # noqa: F401
    except ImportError as e:
        print(f"SKIP: Selenium is not installed ({e}); scripts/setup.sh installs it")
        return SKIP
    try:
        start_browser().quit()
    except Exception as e:  # no Chromium, no driver, or it cannot start here
        print(f"SKIP: headless Chromium does not start here: {str(e).splitlines()[0] if str(e) else type(e).__name__}")
        return SKIP
    result = unittest.main(argv=[sys.argv[0]] + rest, exit=False, verbosity=2).result
    return 0 if result.wasSuccessful() else 1


if __name__ == "__main__":
    sys.exit(main())
