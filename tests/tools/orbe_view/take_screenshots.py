# Makes the pictures of docs/view.md anew. Arguments: orbe-view, orbe-recording, chromium, chromedriver, the folder.
import os
import sys
import tempfile
import time

from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys

from browser import start_browser
from view_program import View, make_recording


def main():
    view_program, recording_program, chromium, driver_program, target = sys.argv[1:6]
    with tempfile.TemporaryDirectory() as folder:
        recording = os.path.join(folder, "monday.bin")
        make_recording(recording_program, recording, "--seconds", "4", "--ports", "1,2", "--signal", "spikes",
                       "--fault", "lost-row:1@5420000+300", "--fault", "wrong-tag:2@2000000+5")
        driver = start_browser(chromium, driver_program, folder, (1300, 860))
        view = View(view_program, recording)
        try:
            driver.get(view.address)
            time.sleep(6)
            ActionChains(driver).send_keys(" ").perform()
            # The lost rows are 2.78 s from the beginning.
            for keys, second, name in [("]" * 6 + "q,", 3, "view-recording.png"), ("td,,", 2, "view-adc-dark.png")]:
                ActionChains(driver).send_keys(keys).perform()
                field = driver.find_element(By.ID, "second")
                field.send_keys(Keys.CONTROL + "a", Keys.NULL, str(second), Keys.ENTER)
                driver.execute_script("document.activeElement.blur()")
                time.sleep(4)
                driver.save_screenshot(os.path.join(target, name))
        finally:
            view.stop()
            driver.quit()


if __name__ == "__main__":
    main()
