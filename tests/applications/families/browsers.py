"""Browsers: Firefox with Gecko, Chromium."""

import re
import subprocess

from agent import contains
from catalogue import Application
from proof import eventually, title_becomes

PAGE = """<!doctype html><meta charset=utf-8><title>Order</title>
<h1>Order form</h1>
<p>Please fill in what you <em>want</em>.</p>
<form onsubmit="document.title='Ordered '+n.value+' '+s.value+' '+(g.checked?'wrapped':'plain');
                return false">
<label for=n>Name</label> <input id=n>
<label for=s>Size</label> <select id=s><option>small<option>medium<option>large</select>
<label><input type=checkbox id=g> Gift wrap</label>
<button>Send order</button>
</form>
<p><a href="second.html">Terms of sale</a></p>
<div style="height:2500px"></div><button onclick="document.title='Bottom'">At the bottom</button>
"""
SECOND = "<!doctype html><title>Terms</title><h1>Terms</h1><p>Nothing is sold here.</p>"
FILES = {"order.html": PAGE, "second.html": SECOND}


def opens_the_page(agent):
    agent.open("file://%s/order.html" % agent.home)
    agent.find("Order form", seconds=40)


def fills_in_a_form_and_sends_it(agent):
    opens_the_page(agent)
    agent.write("Ada Example", "Name", "textbox")
    agent.click("Gift wrap", "checkbox")
    agent.click("Send order", "button")
    title_becomes("Ordered Ada Example small wrapped")


def chooses_in_a_list(agent):
    opens_the_page(agent)
    agent.click("Size", "popupbutton")
    agent.click("large", where=lambda node: node["clickable"] and node["role"] != "text")
    agent.click("Send order", "button")
    title_becomes("Ordered +large plain")


def follows_a_link_and_goes_back(agent):
    opens_the_page(agent)
    agent.click("Terms of sale", "link")
    title_becomes("^Terms")
    agent.click("Back", "button")
    title_becomes("^Order")


def scrolls_to_the_bottom_and_presses(agent):
    opens_the_page(agent)
    for _ in range(6):
        if agent.shows("At the bottom", "button"):
            break
        agent.scroll(800, "Order form") if agent.shows("Order form") else agent.scroll(
            800, where=lambda node: node.get("url"))
    agent.click("At the bottom", "button")
    title_becomes("^Bottom")


def goes_to_an_address(agent):
    opens_the_page(agent)
    address = agent.find(contains("ddress"), where=lambda node: node["editable"])
    agent.write("file://%s/second.html" % agent.home, address["name"], address["role"], submit=True)
    title_becomes("^Terms")


def finds_a_word_in_the_page(agent):
    opens_the_page(agent)
    agent.press("Control+f", where=lambda node: node.get("url"))
    agent.write("terms", where=lambda node: node["editable"] and node.get("focused"))
    agent.find(re.compile("1 of 1|1/1"))


def works_on_a_page_of_one_site(agent):
    """The page is served, and the session is bound to its site."""
    serve(agent.home)
    agent.open("http://127.0.0.1:%d/order.html" % port(agent.home))
    agent.connect(launch=False, site="http://127.0.0.1:%d" % port(agent.home))
    agent.write("Ada", "Name", "textbox")
    agent.click("Send order", "button")
    title_becomes("Ordered Ada small plain")


SERVER = """import http.server, pathlib
server = http.server.HTTPServer(("127.0.0.1", 0), http.server.SimpleHTTPRequestHandler)
pathlib.Path("port").write_text(str(server.server_port))
server.serve_forever()
"""


def serve(folder):
    subprocess.Popen(["/usr/bin/python3", "-c", SERVER], cwd=folder, stderr=subprocess.DEVNULL)
    eventually(lambda: (folder / "port").read_text(), "the server runs")


def port(folder):
    return int((folder / "port").read_text())


COMMON = [fills_in_a_form_and_sends_it, chooses_in_a_list, follows_a_link_and_goes_back,
          scrolls_to_the_bottom_and_presses, goes_to_an_address, finds_a_word_in_the_page,
          works_on_a_page_of_one_site]

# As root, as in a container, Chromium starts only without its sandbox. It has no tree when it was
# started by somebody who did not ask for one.
CHROMIUM = ["chromium", "--no-sandbox", "--no-first-run", "--disable-gpu",
            "--password-store=basic", "--force-renderer-accessibility"]

APPLICATIONS = [
    Application("Firefox", "Gecko", "firefox-esr",
                program=["firefox-esr"], files=FILES, tasks=COMMON, seconds=150),
    Application("Chromium", "Chromium", "chromium", program=CHROMIUM,
                command=" ".join(CHROMIUM), files=FILES, tasks=COMMON, seconds=150),
]
