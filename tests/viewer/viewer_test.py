"""Uses the viewer in Chromium as a reader does, and runs the examples of docs/reading-tags.md.

Arguments: the program ventrix, the folder of the sources. The exit status is 77 if the machine has no browser to drive.
"""
import json
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import time
import unittest

try:
    from selenium import webdriver
    from selenium.webdriver.common.by import By
    from selenium.webdriver.common.keys import Keys
except ImportError:
    webdriver = None

PROGRAM = pathlib.Path(sys.argv[1])
ROOT = pathlib.Path(sys.argv[2])
SWITCHES = ["--headless=new", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-sync",
            "--disable-background-networking", "--disable-component-update", "--window-size=1000,900"]

# What a page has in its main element, where "expert" stands for the tag; what is left to read of it without experts, and how
# many pictures.
PICTURE = '<img alt="" width="9" height="9" src="data:image/gif;base64,R0lGODlhAQABAAAAACw=" />'
FILTERED = [
    (f'<div><h2 expert="">Keys</h2><p expert="">Three.</p>{PICTURE}</div><p>end</p>', "end", 0),
    (f'<div><h2>Keys</h2><p expert="">Three.</p>{PICTURE}</div>', "Keys", 1),
    (f'<ol><li><p>{PICTURE}<span expert="">a</span></p></li><li>b</li></ol>', "b", 0),
    (f'<figure>{PICTURE}<figcaption expert="">a</figcaption></figure><p>end</p>', "end", 0),
    (f'<section><p>{PICTURE}<span expert="">a</span></p><p>b</p></section>', "b", 1),
    ('<table><tr><td>a</td><td expert="">b</td><td>c</td></tr><tr><td>d</td><td>e</td><td>f</td></tr></table>', "a\t\tc\nd\te\tf", 0),
    (f'<table><tr><td>a</td></tr><tr><td expert="">b</td></tr><tr><td expert="">c{PICTURE}</td></tr></table>', "a", 0),
    ('<table><tr><th></th><th expert="">a</th><th>b</th></tr><tr><td>c</td><td expert="">d</td><td>e</td></tr></table>', "\tb\nc\te", 0),
    ('<table><tbody><tr><td expert="">a</td></tr></tbody></table><p>end</p>', "end", 0),
]


def missing():
    programs = [name for name in ("chromium", "chromedriver", "xsltproc") if shutil.which(name) is None]
    return programs + ([] if webdriver else ["python3-selenium"])


def start_browser():
    options = webdriver.ChromeOptions()
    options.binary_location = shutil.which("chromium")
    for switch in SWITCHES:
        options.add_argument(switch)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    return webdriver.Chrome(service=webdriver.chrome.service.Service(shutil.which("chromedriver")), options=options)


class Viewer(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.place = pathlib.Path(cls.folder.name)
        for name in ("ventrix.js", "ventrix.css"):
            shutil.copy(ROOT / "desk/data" / name, cls.place)
        shutil.copy(ROOT / "tests/viewer/passages.html", cls.place)
        subprocess.run([PROGRAM, "publish", ROOT / "examples/pump-guide/pump-guide.ditamap", "-o", cls.place / "guide", "--dita-ot",
                        "--attributes", "audience,product", "--xpath", "--source-path", "section", "--map", "--viewer"],
                       check=True, capture_output=True)
        cls.map_file = next(cls.place.glob("guide/**/ventrix-map.json"))
        cls.browser = start_browser()

    @classmethod
    def tearDownClass(cls):
        cls.browser.quit()
        cls.folder.cleanup()

    def open(self, page):
        self.browser.get(page.as_uri())

    def button(self, label):
        return self.browser.find_element(By.XPATH, f"//button[@aria-label='{label}' or .='{label}']")

    def visible(self, selector):
        return [e for e in self.browser.find_elements(By.CSS_SELECTOR, selector) if e.is_displayed()]

    def panel(self):
        return "".join(e.text for e in self.visible(".ventrix-panel"))

    def wait_for_panel(self, text):
        """The panel waits until the pointer rests."""
        end = time.monotonic() + 5
        while text not in self.panel() and time.monotonic() < end:
            time.sleep(0.05)
        self.assertIn(text, self.panel())

    def press(self, *keys):
        webdriver.ActionChains(self.browser).send_keys(*keys).perform()

    def focused(self):
        return self.browser.switch_to.active_element

    def open_filtered(self, content):
        """A page with this content, without what is for experts."""
        page = self.place / "filtered.html"
        page.write_text('<!DOCTYPE html><link rel="stylesheet" href="ventrix.css" /><script src="ventrix.js" defer="defer"></script><main>' +
                        content.replace('expert=""', 'data-twtags="audienceQL_SEPexpertQL_SEP"') + "</main>", encoding="utf-8")
        self.open(page)
        before = self.find("main").get_attribute("innerHTML")
        self.button("audience: expert").click()
        return before

    def find(self, selector):
        return self.browser.find_element(By.CSS_SELECTOR, selector)

    def tearDown(self):
        errors = [entry for entry in self.browser.get_log("browser") if entry["level"] == "SEVERE"]
        self.assertEqual(errors, [])

    def test_a_chip_hides_whole_items_rows_and_sections(self):
        self.open(self.place / "passages.html")
        self.button("audience: expert").click()
        self.assertEqual([e.text for e in self.visible("#list > li")], ["first", "third"])
        self.assertEqual(len(self.visible("#table tr")), 1)
        self.assertEqual(self.visible("#section, #note"), [])
        self.assertEqual(len(self.visible("#picture, #plain")), 2)
        self.assertEqual(self.browser.find_element(By.CSS_SELECTOR, "[role=status]").text, "8 of 11 passages hidden")
        self.button("audience: novice").click()
        self.assertEqual([e.text for e in self.visible("#list > li")], ["first"])
        for name in ("expert", "novice"):
            self.button(f"audience: {name}").send_keys(Keys.ENTER)
        self.assertEqual(len(self.visible("#list > li, #row, #section, #note")), 6)

    def test_what_has_no_text_left_goes_with_its_pictures(self):
        for content, text, pictures in FILTERED:
            with self.subTest(content):
                before = self.open_filtered(content)
                self.assertEqual(self.browser.execute_script("return document.querySelector('main').innerText;").strip(" \n"), text)
                self.assertEqual(len(self.visible("main img")), pictures)
                self.button("audience: expert").click()
                self.assertEqual(self.find("main").get_attribute("innerHTML"), before)

    def test_a_hidden_cell_keeps_its_place(self):
        self.open_filtered('<table><tr><th rowspan="2">a</th><td id="above">b</td></tr><tr id="gone"><td expert="">c</td></tr>'
                           '<tr><td expert="">d</td><td id="kept">e</td></tr></table>')
        self.assertEqual(self.find("#gone").size["height"], 0)
        self.assertEqual(self.find("#kept").location["x"], self.find("#above").location["x"])
        nodes = self.browser.execute_cdp_cmd("Accessibility.getFullAXTree", {})["nodes"]
        self.assertEqual([node["name"]["value"] for node in nodes if node.get("role", {}).get("value") in ("cell", "gridcell")],
                         ["b", "", "e"])

    def test_a_section_of_the_guide_goes_with_its_picture(self):
        self.open(self.map_file.parent / "topics/parts.html")
        self.assertEqual(len(self.visible("main img")), 1)
        self.button("product: P40-Smart").click()
        self.assertEqual(self.visible("main img"), [])
        self.assertIn("Suction side", self.find("main").text)

    def test_the_pointer_and_the_keyboard_show_sources(self):
        self.open(self.place / "passages.html")
        item = self.find("#list li:nth-child(2)")
        show = self.button("Show source")
        webdriver.ActionChains(self.browser).move_to_element(item).perform()
        self.assertEqual(self.panel(), "")
        show.click()
        webdriver.ActionChains(self.browser).move_to_element(item).perform()
        self.wait_for_panel("topics/a b.dita")
        self.assertIn("/topic/body/ol/li[2]", self.panel())
        item.send_keys(Keys.TAB)
        self.assertIn("expert novice", self.panel())
        self.press(Keys.ESCAPE)
        self.assertEqual(self.panel(), "")
        self.assertIsNone(item.get_attribute("tabindex"))
        self.assertEqual(self.focused(), show)

    def test_the_pointer_reaches_the_link_across_other_passages(self):
        self.open(self.place / "passages.html")
        self.button("Show source").click()
        item = self.find("#list li:nth-child(2)")
        webdriver.ActionChains(self.browser).move_to_element(item).perform()
        self.wait_for_panel("topics/a b.dita")
        crossed = self.find("#list li:nth-child(3) p")
        link = self.find(".ventrix-panel a")
        webdriver.ActionChains(self.browser, duration=20).move_to_element(crossed).move_by_offset(5, 0).move_to_element(link).perform()
        time.sleep(0.5)
        self.assertIn("topics/a b.dita", self.panel())
        self.assertEqual(self.browser.execute_script("return document.querySelector(':hover > a:hover')?.href;"),
                         "vscode://file/work/my%20guide/topics/a%20b.dita")
        webdriver.ActionChains(self.browser).move_to_element(crossed).perform()
        self.wait_for_panel("expert novice")

    def test_a_click_pins_the_panel_to_a_passage(self):
        self.open(self.place / "passages.html")
        self.button("Show source").click()
        item, other = self.find("#list li:nth-child(2)"), self.find("#list li:nth-child(3) p")
        item.click()
        place = self.find(".ventrix-panel").location
        webdriver.ActionChains(self.browser).move_to_element(other).perform()
        time.sleep(0.5)
        item.send_keys(Keys.SHIFT + Keys.TAB)
        self.assertIn("topics/a b.dita", self.panel())
        self.assertEqual(self.find(".ventrix-panel").location, place)
        other.click()
        self.assertIn("expert novice", self.panel())
        self.find(".ventrix-panel button").click()
        self.assertEqual((self.panel(), self.focused()), ("", other))

    def test_the_keyboard_reaches_the_link_of_each_passage(self):
        self.open(self.place / "passages.html")
        self.button("Show source").click()
        item, other = self.find("#list li:nth-child(2)"), self.find("#list li:nth-child(3) p")
        for key in (Keys.ENTER, Keys.SPACE):
            self.browser.execute_script("arguments[0].focus();", item)
            self.press(key)
            self.assertEqual(self.focused().get_attribute("href"), "vscode://file/work/my%20guide/topics/a%20b.dita")
            self.press(Keys.ESCAPE)
            self.assertEqual((self.panel(), self.focused()), ("", item))
        self.press(Keys.ENTER, Keys.TAB)
        self.assertEqual(self.focused().text, "Close")
        self.press(Keys.TAB)
        self.assertEqual(self.focused(), other)
        self.assertIn("topics/a b.dita", self.panel())
        self.focused().send_keys(Keys.SHIFT + Keys.TAB)
        self.assertEqual(self.focused(), item)
        self.press(Keys.TAB)
        self.assertEqual(self.focused().text, "Open in the editor")
        self.press(Keys.ESCAPE, Keys.ESCAPE)
        self.assertEqual(self.focused(), self.button("Show source"))

    def test_a_link_among_the_passages_still_leads_to_its_page(self):
        self.open(self.map_file.parent / "topics/overview.html")
        self.button("Show source").click()
        self.browser.execute_script("document.querySelector('a[data-twtags][href^=parts]').focus();")
        self.press(Keys.SPACE)
        self.assertIn("Parts of the pump", self.browser.execute_script("return document.querySelector('.ventrix-pinned').textContent;"))
        self.press(Keys.ESCAPE)
        self.press(Keys.ENTER)
        self.assertTrue(self.browser.current_url.endswith("/parts.html"))

    def test_a_passage_with_the_focus_is_in_sight(self):
        covered = """const here = document.activeElement.getBoundingClientRect();
            return [...document.querySelectorAll('.ventrix-bar, .ventrix-panel:not([hidden])')].map(e => e.getBoundingClientRect())
                .some(r => here.top >= r.top && here.bottom <= r.bottom && here.left >= r.left && here.right <= r.right);"""
        for width, height in ((1200, 900), (400, 600)):
            self.browser.set_window_size(width, height)
            self.addCleanup(self.browser.set_window_size, 1000, 900)
            self.open(self.map_file.parent / "topics/overview.html")
            self.button("Show source").click()
            for start in (Keys.TAB, Keys.ENTER):
                self.browser.execute_script("document.querySelector('h1').focus();")
                self.press(start)
                hidden, seen = [], 0
                while seen < 60 and self.browser.execute_script("return document.activeElement.closest('.ventrix-bar') === null;"):
                    seen += 1
                    if self.browser.execute_script("return document.activeElement.matches('.ventrix-focus');"):
                        hidden += [self.focused().text] if self.browser.execute_script(covered) else []
                    self.press(Keys.TAB)
                self.assertIn(seen, range(10, 60))
                self.assertEqual(hidden, [], f"{width} {start!r}")

    def test_an_element_that_the_browser_adds_shifts_no_places(self):
        self.open(self.place / "passages.html")
        self.button("Show source").click()
        self.browser.execute_script("document.getElementById('bare').focus();")
        self.assertIn("x2", self.panel())
        self.assertNotIn("cell.dita", self.panel())

    def test_a_published_page_names_lines_and_no_private_folder(self):
        elements = json.loads(self.map_file.read_text(encoding="utf-8"))["elements"]
        wanted = next(e for e in elements if e["page"] == "topics/overview.html" and e["attributes"])
        page = self.map_file.parent / wanted["page"]
        self.assertNotIn(str(ROOT), page.read_text(encoding="utf-8"))
        source = (ROOT / "examples/pump-guide" / wanted["source"]).read_text(encoding="utf-8").splitlines()
        self.assertIn(f"product=\"{wanted['attributes']['product']}\"", source[wanted["line"] - 1])
        self.open(page)
        self.button("Show source").click()
        passage = self.browser.find_element(By.CSS_SELECTOR, "[data-twtags*='productQL_SEP']")
        webdriver.ActionChains(self.browser).move_to_element(passage).perform()
        self.wait_for_panel(f"{wanted['source']}, line {wanted['line']}")
        self.assertEqual(self.visible(".ventrix-panel a"), [])

    def test_the_examples_find_the_passages_for_experts(self):
        text = (ROOT / "docs/reading-tags.md").read_text(encoding="utf-8")
        javascript, python, xslt = (re.search(f"```{kind}\n(.*?)```", text, re.S).group(1) for kind in ("js", "python", "xml"))
        page = self.place / "passages.html"
        self.open(page)
        self.assertEqual(self.browser.execute_script(javascript + "return forExperts.length;"), 9)
        names = {}
        exec(python, names)  # pylint: disable=exec-used
        self.assertEqual(len(names["for_experts"](page)), 9)
        (self.place / "list.xsl").write_text(xslt, encoding="utf-8")
        lines = subprocess.run(["xsltproc", self.place / "list.xsl", page], check=True, capture_output=True, text=True).stdout
        self.assertIn("expert: second\nexpert novice: third\n", lines)
        self.assertEqual(lines.count("\n"), 9)


if __name__ == "__main__":
    if missing():
        print("skipped: not installed: " + ", ".join(missing()))
        sys.exit(77)
    unittest.main(argv=sys.argv[:1])
