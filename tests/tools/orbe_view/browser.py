# A browser for the tests of orbe-view: Chromium, headless.
import os
import signal

from selenium import webdriver
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service


def start_browser(chromium, driver_program, folder, size):
    """The browser, with what it keeps and downloads in the folder."""
    options = Options()
    options.binary_location = chromium
    for argument in ["--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--no-proxy-server",
                     f"--window-size={size[0]},{size[1]}", f"--user-data-dir={folder}/profile"]:
        options.add_argument(argument)
    options.add_experimental_option("prefs", {"download.default_directory": folder})
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    return webdriver.Chrome(service=Service(driver_program), options=options)


def processes_of(browser):
    """The browser's own processes, without the one that drives it."""
    parents = {}
    for name in filter(str.isdigit, os.listdir("/proc")):
        try:
            with open(f"/proc/{name}/stat") as file:
                parents[int(name)] = int(file.read().rsplit(")", 1)[1].split()[1])
        except OSError:
            pass  # it has ended
    family = {browser.service.process.pid}
    while grown := {child for child, parent in parents.items() if parent in family and child not in family}:
        family |= grown
    return family - {browser.service.process.pid}


class Stalled:
    """Within it the browser does nothing at all."""

    def __init__(self, browser):
        self.processes = processes_of(browser)

    def __enter__(self):
        self.tell(signal.SIGSTOP)
        return self

    def __exit__(self, *_):
        self.tell(signal.SIGCONT)

    def tell(self, what):
        for process in self.processes:
            try:
                os.kill(process, what)
            except ProcessLookupError:
                pass
