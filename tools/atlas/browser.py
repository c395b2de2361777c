"""The page in a browser: its views, and the pictures of the documentation."""

import tempfile
from pathlib import Path

# What the documentation shows: view, size, colour scheme, and from which element on.
PICTURES = {
    "atlas.png": (
        "table=PER2020_Ind_1o&with=DAV2004R_Agg_2o&year=2026",
        (1400, 1140),
        "light",
        "body",
    ),
    "atlas-ratio.png": (
        "table=PASEM2020_Gen_2o&with=PASEM2020_Rel_1o,PASEM2020_NoRel_1o&rates=ratio&ages=0-105",
        (1400, 900),
        "light",
        "body",
    ),
    "atlas-tooltip.png": (
        "table=PER2020_Ind_1o&with=PER2020_Col_1o,GRMF95,DAV2004R_Agg_1o&year=2026&ages=40-100",
        (1400, 800),
        "light",
        "#rates",
    ),
    "atlas-phone.png": ("table=CB_H_2020&year=2023", (390, 844), "dark", "body"),
    "atlas-life.png": (
        "table=DAV2004R_SelUlt_1o&year=2026&age=55&deferred=10&paid=monthly"
        "&lives=DAV2004R_SelUlt_1o.m.selected,DAV2004R_SelUlt_1o.f.selected&age2=52",
        (390, 844),
        "light",
        "#lives",
    ),
}
BROWSER = (
    "--headless", "--hide-scrollbars", "--no-sandbox", "--disable-gpu", "--disable-quic",
    "--no-first-run", "--disable-background-networking", "--disable-component-update",
    "--disable-sync",
)  # fmt: skip


def browser(folder):
    """A browser that is to paint and nothing else, with a profile in the folder."""
    from selenium import webdriver  # not needed by who only writes the page

    options = webdriver.ChromeOptions()
    options.binary_location = "/usr/bin/chromium"
    for flag in (*BROWSER, f"--user-data-dir={folder / 'profile'}"):
        options.add_argument(flag)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    options.add_experimental_option("prefs", {"download.default_directory": str(folder)})
    service = webdriver.ChromeService("/usr/bin/chromedriver")
    return webdriver.Chrome(options=options, service=service)


def open_view(driver, file, view="", size=(1400, 900), scheme="light"):
    """A view of the page by its link, as in a new tab."""
    features = [{"name": "prefers-color-scheme", "value": scheme}]
    driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": features})
    width, height = size
    metrics = {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": width < 500}
    driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", metrics)
    driver.get("about:blank")
    driver.get(file.resolve().as_uri() + ("#" + view if view else ""))


def paint(file, folder):
    """The pictures of the documentation."""
    from selenium.webdriver import ActionChains

    with tempfile.TemporaryDirectory() as profile:
        driver = browser(Path(profile))
        try:
            for name, (view, size, scheme, start) in PICTURES.items():
                open_view(driver, file, view, size, scheme)
                driver.execute_script(f"document.querySelector('{start}').scrollIntoView()")
                if name == "atlas-tooltip.png":
                    plot = driver.find_element("css selector", "#rates .u-over")
                    ActionChains(driver).move_to_element(plot).perform()
                (folder / name).write_bytes(driver.get_screenshot_as_png())
        finally:
            driver.quit()
