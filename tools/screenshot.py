#!/usr/bin/python3
"""Takes the screenshot in the README: a page of the example guide with the viewer.

screenshot.py VENTRIX RESULT.png: needs Chromium and python3-selenium.
"""
import pathlib
import shutil
import subprocess
import sys
import tempfile

from selenium import webdriver
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import WebDriverWait

ROOT = pathlib.Path(__file__).resolve().parent.parent
SWITCHES = ["--headless=new", "--no-sandbox", "--disable-gpu", "--hide-scrollbars", "--window-size=1200,883"]


def publish(program, folder):
    subprocess.run([program, "publish", ROOT / "examples/pump-guide/pump-guide.ditamap", "-o", folder, "--xpath", "--viewer",
                    "--attributes", "audience,product", "--elements", "uicontrol"], check=True, capture_output=True)
    return next(folder.glob("**/overview.html"))


def take(page, result):
    options = webdriver.ChromeOptions()
    options.binary_location = shutil.which("chromium")
    for switch in SWITCHES:
        options.add_argument(switch)
    browser = webdriver.Chrome(service=webdriver.chrome.service.Service(shutil.which("chromedriver")), options=options)
    try:
        browser.get(page.as_uri())
        browser.find_element(By.XPATH, "//button[.='Show source']").click()
        passage = browser.find_element(By.XPATH, "//p[contains(@data-twtags, 'P40-Smart')]")
        webdriver.ActionChains(browser).move_to_element(passage).perform()
        # The panel comes when the pointer rests.
        WebDriverWait(browser, 10).until(lambda _: browser.find_element(By.CLASS_NAME, "ventrix-panel").is_displayed())
        browser.save_screenshot(str(result))
    finally:
        browser.quit()


with tempfile.TemporaryDirectory() as place:
    take(publish(sys.argv[1], pathlib.Path(place) / "guide"), pathlib.Path(sys.argv[2]))
