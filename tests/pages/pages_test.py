"""Looks at published pages as readers, assistive programs and browsers do: with axe-core, a validator of HTML, and Chromium.

Arguments: the program ventrix, the folder of the sources, the folder of the checkers that npm installed. The exit status is 77
if the machine has no browser to drive. Without the checkers, their tests are skipped.
"""
import html.parser
import json
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import urllib.parse

try:
    from selenium import webdriver
    from selenium.webdriver.common.by import By
    from selenium.webdriver.common.keys import Keys
except ImportError:
    webdriver = None

PROGRAM = pathlib.Path(sys.argv[1])
ROOT = pathlib.Path(sys.argv[2])
AXE = pathlib.Path(sys.argv[3]) / "node_modules/axe-core/axe.min.js"
VALIDATOR = pathlib.Path(sys.argv[3]) / "node_modules/vnu-jar/build/dist/vnu.jar"
GUIDE = ROOT / "examples/pump-guide/pump-guide.ditamap"
EVERYTHING = ROOT / "tests/pages/everything"
SWITCHES = ["--headless=new", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-sync",
            "--disable-background-networking", "--disable-component-update", "--hide-scrollbars"]


def missing():
    programs = [name for name in ("chromium", "chromedriver") if shutil.which(name) is None]
    return programs + ([] if webdriver else ["python3-selenium"])


class Links(html.parser.HTMLParser):
    """The ids of a page, and what its elements refer to."""

    def __init__(self, page):
        super().__init__()
        self.ids, self.references = [], []
        self.feed(page.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attrs):
        values = dict(attrs)
        self.ids += [values["id"]] if "id" in values else []
        self.references += [values[name] for name in ("href", "src") if name in values]


def broken_links(pages):
    known = {page: Links(page) for page in pages}
    broken = []
    for page, links in known.items():
        for reference in links.references:
            parts = urllib.parse.urlsplit(reference)
            target = (page.parent / urllib.parse.unquote(parts.path)).resolve() if parts.path else page
            if not parts.scheme and (not target.is_file() or (parts.fragment and parts.fragment not in known[target].ids)):
                broken.append(f"{page}: {reference}")
    return broken


class Pages(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.place = pathlib.Path(cls.folder.name).resolve()
        carried = ["--attributes", "audience,product,platform", "--xpath"]
        cls.guide = cls.publish(GUIDE, "guide", *carried, "--source-path", "section")
        cls.viewed = cls.publish(GUIDE, "viewed", *carried, "--elements", "uicontrol", "--viewer",
                                 "--report", cls.place / "report.html")
        cls.all = cls.publish(EVERYTHING / "everything.ditamap", "all", "--title", "Every <element>",
                              "--css", EVERYTHING / "custom.css", "--logo", EVERYTHING / "dot.svg")
        # The elements are preserved where they are part of running text.
        cls.restored = cls.publish(EVERYTHING / "words.dita", "restored", "--elements",
                                   "menucascade,uicontrol,wintitle,codeph,filepath,varname,tm,xmlelement")
        options = webdriver.ChromeOptions()
        options.binary_location = shutil.which("chromium")
        for switch in SWITCHES:
            options.add_argument(switch)
        cls.browser = webdriver.Chrome(service=webdriver.chrome.service.Service(shutil.which("chromedriver")), options=options)

    @classmethod
    def tearDownClass(cls):
        cls.browser.quit()
        cls.folder.cleanup()

    @classmethod
    def publish(cls, document, name, *options):
        """The pages."""
        done = subprocess.run([PROGRAM, "publish", document, "-o", cls.place / name, *options], check=False, capture_output=True,
                              text=True)
        if done.returncode not in (0, 1):
            raise AssertionError(done.stderr)
        return sorted((cls.place / name).rglob("*.html"))

    @staticmethod
    def named(pages, name):
        return next(page for page in pages if page.name == name)

    def open(self, page, width=1280, scheme="light", media="screen"):
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia",
                                     {"media": media, "features": [{"name": "prefers-color-scheme", "value": scheme}]})
        self.browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                                     {"width": width, "height": 900, "deviceScaleFactor": 1, "mobile": False})
        self.browser.get(page.as_uri())

    def find(self, selector):
        return self.browser.find_element(By.CSS_SELECTOR, selector)

    def find_all(self, selector):
        return self.browser.find_elements(By.CSS_SELECTOR, selector)

    def style(self, selector, name, pseudo=""):
        return self.browser.execute_script("return getComputedStyle(document.querySelector(arguments[0]), arguments[2])[arguments[1]];",
                                           selector, name, pseudo or None)

    def assert_axe_finds_nothing(self, name):
        self.browser.execute_script(AXE.read_text(encoding="utf-8"))
        result = self.browser.execute_async_script("axe.run().then(arguments[arguments.length - 1]);")
        found = [f"{v['id']}: {node['html']}" for v in result["violations"] for node in v["nodes"]]
        self.assertEqual(found, [], name)
        self.assertGreater(len(result["passes"]), 10)

    @unittest.skipUnless(AXE.exists(), f"axe-core is not installed ({AXE})")
    def test_axe_finds_nothing(self):
        for page in [*self.guide, *self.viewed, *self.all, *self.restored, self.place / "report.html"]:
            for width, scheme in ((1280, "light"), (320, "dark")):
                self.open(page, width, scheme)
                self.assert_axe_finds_nothing(f"{page} {width} {scheme}")

    @unittest.skipUnless(AXE.exists(), f"axe-core is not installed ({AXE})")
    def test_axe_finds_nothing_while_the_viewer_is_used(self):
        for width, scheme in ((1280, "light"), (320, "dark")):
            self.open(self.named(self.viewed, "controller.html"), width, scheme)
            for label in ("audience: expert", "Show source"):
                self.browser.find_element(By.XPATH, f"//button[@aria-label='{label}' or .='{label}']").send_keys(Keys.ENTER)
            self.find("main .shortdesc, main p").send_keys(Keys.ENTER)
            self.assertTrue(self.find(".ventrix-panel").is_displayed())
            self.assert_axe_finds_nothing(f"{width} {scheme}")

    @unittest.skipUnless(VALIDATOR.exists() and shutil.which("java"), f"java or the validator is not installed ({VALIDATOR})")
    def test_pages_are_valid_html(self):
        def errors(*pages):
            done = subprocess.run(["java", "-jar", VALIDATOR, "--format", "json", "--errors-only", *pages], check=False,
                                  capture_output=True, text=True)
            return [f"{m.get('url', '')}:{m.get('lastLine')}: {m['message']}" for m in json.loads(done.stderr)["messages"]]

        self.assertEqual(errors(*self.guide, *self.all, self.place / "report.html"), [])
        # Elements that Ventrix restores are DITA's, not HTML's.
        self.assertEqual([e for e in errors(*self.viewed) if "Element “uicontrol” not allowed" not in e], [])
        wrong = self.place / "wrong.html"
        wrong.write_text("<!DOCTYPE html><html><body><p><table></p></body></html>", encoding="utf-8")
        self.assertNotEqual(errors(wrong), [])

    def test_no_link_is_broken(self):
        self.assertGreater(len(Links(self.guide[0]).references), 10)
        self.assertEqual(broken_links([*self.guide, *self.viewed, *self.all]), [])

    def test_pages_fit_windows_of_all_widths(self):
        for page in [*self.guide, *self.all, self.named(self.viewed, "controller.html"), self.place / "report.html"]:
            for width in (320, 360, 480, 961, 1280, 2560):
                self.open(page, width)
                over = self.browser.execute_script("return document.documentElement.scrollWidth - innerWidth;")
                self.assertLessEqual(over, 0, f"{page} {width}")
        self.open(self.named(self.guide, "overview.html"), 1280)
        self.assertLess(self.find(".ventrix-contents").location["x"], self.find("main").location["x"])
        self.open(self.named(self.guide, "overview.html"), 320)
        self.assertLess(self.find("main").location["y"], self.find(".ventrix-contents").location["y"])
        self.find(".ventrix-jump").click()
        self.assertLess(self.browser.execute_script(
            "return document.getElementById('ventrix-contents').getBoundingClientRect().top;"), 700)

    def test_a_page_shows_the_way_to_the_others(self):
        self.open(self.named(self.guide, "stop.html"))
        self.assertEqual(self.find("html").get_attribute("lang"), "en")
        self.assertEqual(self.find("meta[name=description]").get_attribute("content"), "Water that freezes in the housing breaks it.")
        self.assertEqual(self.browser.title,
                         "Stop the pump for the winter - Garden pump P40: installing, running, looking after it")
        self.assertEqual([e.text for e in self.find_all(".ventrix-breadcrumb li")],
                         ["Home", "Start the pump", "Stop the pump for the winter"])
        self.assertEqual([e.text for e in self.find_all("[aria-current=page]")], ["Stop the pump for the winter"] * 2)
        self.assertEqual([e.text for e in self.find_all(".ventrix-pager a")],
                         ["Previous\nStart the pump", "Next\nSettings of the controller"])
        self.assertEqual([len(self.find_all(name)) for name in ("header", "main", "nav", "h1")], [1, 1, 3, 1])
        self.find("body").send_keys(Keys.TAB)
        self.assertEqual(self.browser.switch_to.active_element.text, "Skip to the content")
        self.find(".ventrix-next").click()
        self.assertTrue(self.browser.current_url.endswith("/topics/controller.html"))
        self.find(".ventrix-home").click()
        self.assertTrue(self.browser.current_url.endswith("/pump-guide/index.html"))

    def test_reading_on_leads_through_all_pages(self):
        self.open(self.named(self.guide, "index.html"))
        seen = [self.browser.current_url]
        while self.find_all(".ventrix-next"):
            before = self.find("h1").text
            self.find(".ventrix-next").click()
            seen.append(self.browser.current_url)
            self.assertIn(before, self.find(".ventrix-previous").text)
        self.assertEqual(sorted(seen), sorted(page.as_uri() for page in self.guide))

    def test_heads_of_tables_have_a_scope(self):
        heads = "".join(page.read_text(encoding="utf-8") for page in [*self.guide, *self.all])
        tags = re.findall(r"<th\b[^>]*>", heads)
        self.assertGreater(len(tags), 10)
        self.assertEqual([tag for tag in tags if "scope=" not in tag], [])

    def test_restored_elements_look_like_what_they_are(self):
        self.open(self.restored[0])
        found = {e.tag_name for e in self.find_all("#words__inline *")}
        self.assertLessEqual({"wintitle", "codeph", "filepath", "varname"}, found)
        # The toolkit writes signs for these, and they are left to it.
        self.assertEqual({"menucascade", "xmlelement"} & found, set())
        for element, name, value in (("wintitle", "fontWeight", "600"), ("varname", "fontStyle", "italic")):
            self.assertEqual(self.style(element, name), value, element)
        for element in ("codeph", "filepath"):
            self.assertIn("mono", self.style(element, "fontFamily"), element)
        head = self.named(self.viewed, "controller.html").read_text(encoding="utf-8").split("</head>")[0]
        self.assertNotIn("QL_", head)

    def test_titles_and_descriptions_are_plain_text(self):
        pages = self.publish(EVERYTHING / "blocks.dita", "plain", "--elements", "uicontrol,codeph", "--xpath")
        self.open(self.named(pages, "blocks.html"))
        self.assertEqual(self.browser.title, "Blocks & tables")
        self.assertEqual(self.find("meta[name=description]").get_attribute("content"), 'What a < b and "quotes" look like.')
        self.assertEqual(self.find("h1 uicontrol").text, "tables")

    def test_a_design_of_ones_own_counts(self):
        page = self.named(self.all, "words.html")
        self.open(page)
        self.assertEqual(self.find(".ventrix-home").text, "Every <element>")
        self.assertEqual(self.browser.title, "Words - Every <element>")
        self.assertEqual(self.style("h1", "letterSpacing"), "3px")
        self.assertEqual(self.style("header", "backgroundColor"), "rgb(64, 32, 96)")
        self.assertGreater(self.browser.execute_script("return document.querySelector('header img').naturalWidth;"), 0)
        # The document has a folder of the name that the style sheets would have.
        self.assertEqual(len(list((page.parent / "ventrix-style-2").iterdir())), 4)

    def test_dark_and_printed_pages_have_colours_of_their_own(self):
        page = self.named(self.guide, "safety.html")
        self.open(page, scheme="dark")
        self.assertEqual(self.style("body", "backgroundColor"), "rgb(20, 25, 31)")
        self.open(page, scheme="dark", media="print")
        self.assertEqual(self.style("body", "backgroundColor"), "rgb(255, 255, 255)")
        self.assertEqual([e for e in self.find_all("nav") if e.is_displayed()], [])
        self.assertTrue(self.find("main").is_displayed())


if __name__ == "__main__":
    if missing():
        print("skipped: not installed: " + ", ".join(missing()))
        sys.exit(77)
    unittest.main(argv=sys.argv[:1])
