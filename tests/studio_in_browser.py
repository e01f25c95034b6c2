#!/usr/bin/env python3
"""Usage: studio_in_browser.py KVX. The studio's page in headless Chromium, used as people use it. Exits 77 where the browser
is missing."""
import json
import os
import shutil
import subprocess
import sys
import tempfile
import time
import unittest

from studio_driver import Browser, Studio

KVX = os.path.abspath(sys.argv[1])
if not (shutil.which("chromium") and shutil.which("chromedriver")):
    sys.exit(77)

# The pixels in the middle of the picture's right half, where the effect shows.
PIXELS = """
const canvas = document.querySelector('#canvas');
const data = canvas.getContext('2d').getImageData(canvas.width * 0.7 | 0, canvas.height * 0.4 | 0, 40, 40).data;
return [...data].join();
"""
STILL = "document.querySelector('#view').getAttribute('aria-busy') === 'false'"


def set_slider(browser, selector, value):
    browser.run("""const [selector, value] = arguments; const slider = document.querySelector(selector);
        slider.value = value; slider.dispatchEvent(new Event('input', {bubbles: true}));
        slider.dispatchEvent(new Event('change', {bubbles: true}));""", selector, value)


class Page(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.home = cls.folder.name
        subprocess.run([KVX, "render", "-e", "Warm", "demo", "a photo.png"], cwd=cls.home, check=True, capture_output=True)
        cls.studio = Studio(KVX, "a photo.png", cls.home, {"XDG_CONFIG_HOME": cls.home + "/config"})
        cls.addClassCleanup(cls.folder.cleanup)
        cls.addClassCleanup(cls.studio.stop)
        cls.browser = Browser()
        cls.addClassCleanup(cls.browser.close)

    @classmethod
    def tearDownClass(cls):
        assert cls.studio.stop() == 0

    def setUp(self):
        self.browser.resize(1600, 900)
        self.browser.open("about:blank")
        self.browser.open(self.studio.address)
        self.browser.wait("document.querySelectorAll('.card[data-state=there]').length > 8")
        self.assertEqual(self.browser.errors(), [])

    def tearDown(self):
        self.assertEqual(self.browser.errors(), [])

    def pixels(self):
        self.browser.wait(STILL)
        return self.browser.run(PIXELS)

    def choose(self, name, add=False):
        browser = self.browser
        browser.run("const s = document.querySelector('#search'); s.value = ''; s.dispatchEvent(new Event('input'));")
        browser.type("#search", name)
        browser.wait(f"[...document.querySelectorAll('.card:not([hidden]) .name')].some(n => n.firstChild.data === '{name}')")
        browser.run("""const [name, kind] = arguments; [...document.querySelectorAll('.card:not([hidden])')]
            .find(card => card.querySelector('.name').firstChild.data === name).querySelector(kind).click();""",
                    name, ".plus" if add else ".choice")
        browser.wait(f"document.querySelector('#tune h2')?.textContent === '{name}'")

    def chain(self):
        return self.browser.run("return [...document.querySelectorAll('.link-name')].map(n => n.textContent).join()")

    def test_find_tune_undo_reload(self):
        browser = self.browser
        source = self.browser.run(PIXELS)
        self.choose("Brightness")
        default = self.pixels()
        self.assertNotEqual(source, default)
        set_slider(browser, "#param-0", 90)
        browser.wait("document.querySelector('.param input[type=number]').value === '90'")
        bright = self.pixels()
        self.assertNotEqual(default, bright)
        browser.call("POST", browser.session + "/refresh")
        browser.wait("document.querySelector('.param input[type=number]')?.value === '90'")
        self.assertEqual(self.pixels(), bright)
        browser.click("#undo")
        browser.wait("document.querySelector('.param input[type=number]').value !== '90'")
        self.assertEqual(self.pixels(), default)
        browser.click("#redo")
        browser.wait("document.querySelector('.param input[type=number]').value === '90'")
        browser.call("POST", browser.session + "/back")
        browser.wait("document.querySelector('.param input[type=number]').value !== '90'")
        set_slider(browser, "#param-0", 20)
        browser.run("document.querySelector('#param-0').dispatchEvent(new MouseEvent('dblclick', {bubbles: true}))")
        self.assertNotEqual(browser.run("return document.querySelector('#param-0').value"), "20")

    def test_chain_by_keyboard_and_the_line_is_true(self):
        browser = self.browser
        self.choose("Emboss")
        self.choose("Sobel" if browser.run(
            "return [...document.querySelectorAll('.name')].some(n => n.textContent === 'Sobel')") else "Warm", add=True)
        second = self.chain().split(",")[1]
        before = self.pixels()
        browser.run("document.querySelector('#chain li:last-child .link-name').focus()")
        browser.keys("\ue00a", "\ue013")  # Alt and the arrow up
        browser.wait(f"document.querySelector('.link-name').textContent === '{second}'")
        self.assertEqual(browser.run("return document.activeElement.textContent"), second)
        self.assertNotEqual(before, self.pixels())
        browser.run("""const field = document.querySelector('[data-control=opacity]'); field.value = 40;
            field.dispatchEvent(new Event('input')); field.dispatchEvent(new Event('change'));""")
        browser.wait("document.querySelector('.line code')?.textContent.includes('opacity=40')")
        line = browser.run("""let copied; navigator.clipboard.writeText = async text => { copied = text; };
            document.querySelector('.line button').click(); return copied;""")
        subprocess.run(line.replace("kvx", KVX, 1), shell=True, check=True, cwd=self.home, capture_output=True)
        name = browser.run("return document.querySelector('#output').value")
        with open(os.path.join(self.home, name), "rb") as file:
            by_line = file.read()
        status, by_studio = self.studio.request("picture?page=x", browser.run(
            "const {project} = await import('./state.js'); return {...project(), frame: 0};"))
        self.assertEqual((status, by_studio), (200, by_line))
        # The same picture on the page, to the pixel.
        browser.click("#zoom-full")
        browser.click("#compare")
        browser.wait("document.querySelector('#zoom').textContent === '100 %'")
        browser.wait(STILL)
        differing = browser.run("""
            const picture = await createImageBitmap(await (await fetch('picture?page=y', {method: 'POST',
                headers: {'Content-Type': 'application/json'}, body: arguments[0]})).blob());
            const own = new OffscreenCanvas(200, 200), brush = own.getContext('2d'), canvas = document.querySelector('#canvas');
            const {zoom} = (await import('./state.js')).look;
            const left = Math.round(canvas.width / 2 - zoom.x), top = Math.round(canvas.height / 2 - zoom.y);
            brush.drawImage(picture, -300, -200);
            const a = brush.getImageData(0, 0, 200, 200).data;
            const b = canvas.getContext('2d').getImageData(left + 300, top + 200, 200, 200).data;
            return a.filter((value, i) => value !== b[i]).length;""",
                                browser.run("const {project} = await import('./state.js'); return JSON.stringify(project());"))
        self.assertEqual(differing, 0)
        os.remove(os.path.join(self.home, name))

    def test_render_beside_the_input(self):
        browser = self.browser
        self.choose("Invert")
        browser.wait("document.querySelector('#output').value === 'a photo-invert.png'")
        browser.click("#render-start")
        browser.wait("document.querySelector('#job-text').textContent.includes('is written')")
        self.assertTrue(os.path.exists(self.home + "/a photo-invert.png"))
        browser.run("const o = document.querySelector('#output'); o.value = 'a photo.png'; o.dispatchEvent(new Event('input'));")
        browser.click("#render-start")
        browser.wait("document.querySelector('#take-message').textContent.includes('exists already')")
        self.assertTrue(all("400" in error for error in browser.errors()))

    def test_keys_over_time_and_recipes(self):
        browser = self.browser
        self.choose("Brightness")
        browser.click(".key-button")
        browser.wait("document.querySelector('#scrub').max === '99'")
        browser.run("const f = document.querySelector('#frame'); f.value = 50; f.dispatchEvent(new Event('change'));")
        set_slider(browser, "#param-0", 10)
        browser.wait("document.querySelectorAll('.key').length === 2")
        browser.wait("document.querySelector('.line code')?.textContent.includes(',50:10')")
        recipe = json.dumps({"effects": [{"effect": "Warm"}, {"effect": "Contrast", "opacity": 50}], "seed": 7})
        drop = """const data = new DataTransfer(); data.items.add(new File([arguments[0]], 'look.json'));
            dispatchEvent(new DragEvent('drop', {dataTransfer: data, bubbles: true}));"""
        browser.run(drop, recipe)
        browser.wait("document.querySelectorAll('.link').length === 2")
        self.assertEqual(self.chain(), "Warm,Contrast")
        browser.wait("document.querySelector('.line code')?.textContent.includes('--seed 7 ')")
        browser.run(drop, '{"effects": [{"effect": "Wrm"}]}')
        browser.wait("document.querySelector('#take-message').textContent.includes('did you mean')")
        self.assertTrue(all("400" in error for error in browser.errors()))

    def test_everything_has_a_name_and_fits(self):
        browser = self.browser
        self.choose("Snow")
        nameless = browser.run("""return [...document.querySelectorAll('button, input, select, canvas, [role=slider]')]
            .filter(e => !(e.ariaLabel || e.getAttribute('aria-label') || e.textContent.trim() || e.labels?.length ||
                           e.getAttribute('aria-hidden'))).map(e => e.outerHTML).join()""")
        self.assertEqual(nameless, "")
        for width, height in ((390, 844), (800, 1000), (1600, 900)):
            browser.resize(width, height)
            time.sleep(0.3)
            self.assertLessEqual(browser.run("return document.documentElement.scrollWidth"), width)
        browser.resize(390, 844)
        for tab in ("take", "adjust", "effects"):
            browser.click(f"#tab-{tab}")
            browser.wait(f"document.querySelector('[data-panel={tab}]').checkVisibility()")

    def test_address_with_nonsense(self):
        self.browser.open(self.studio.address + "#%7B%22doc%22%3A%7B%22effects%22%3A%5B7%2Cnull%2C%7B%22id%22%3A71%7D%5D%7D%7D")
        self.browser.call("POST", self.browser.session + "/refresh")
        self.browser.wait("document.querySelectorAll('.link').length === 1")
        self.assertEqual(self.chain(), "Invert")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=1)
