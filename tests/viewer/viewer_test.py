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

    def test_the_pointer_and_the_keyboard_show_sources(self):
        self.open(self.place / "passages.html")
        item = self.browser.find_element(By.CSS_SELECTOR, "#list li:nth-child(2)")
        show = self.button("Show source")
        webdriver.ActionChains(self.browser).move_to_element(item).perform()
        self.assertEqual(self.panel(), "")
        show.click()
        webdriver.ActionChains(self.browser).move_to_element(item).perform()
        self.assertIn("topics/a b.dita", self.panel())
        self.assertIn("/topic/body/ol/li[2]", self.panel())
        link = self.browser.find_element(By.CSS_SELECTOR, ".ventrix-panel a").get_attribute("href")
        self.assertEqual(link, "vscode://file/work/my%20guide/topics/a%20b.dita")
        item.send_keys(Keys.TAB)
        self.assertIn("expert novice", self.panel())
        webdriver.ActionChains(self.browser).send_keys(Keys.ESCAPE).perform()
        self.assertEqual(self.panel(), "")
        self.assertIsNone(item.get_attribute("tabindex"))
        self.assertEqual(self.browser.switch_to.active_element, show)

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
        self.assertIn(f"{wanted['source']}, line {wanted['line']}", self.panel())
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
