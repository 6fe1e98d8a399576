"""The pages of the account, web, forum and wiki hosts."""

from __future__ import annotations

import html
from functools import lru_cache
from pathlib import Path
from string import Template

from .messages import Request, Response, text_response
from .names import ACCOUNT, DOMAIN, FORUM, WIKI, WWW

FOLDER = Path(__file__).with_name("pages")

# (host, path) -> title and text of a plain page.
PLAIN = {
    (WWW, "/"): ("Quellmoor", "A game of springs, mist and old roads. "
                 "The moor keeps what it is given."),
    (WWW, "/resetpass/"): ("Forgotten password", "Tell us your user name and we send "
                           "a new key to the address of your account."),
    (WWW, "/help/faq/"): ("Questions and answers", "How do I get into the game? "
                          "Log in with the launcher and press Play."),
    (WWW, "/account/"): ("Your account", "Two-step tokens, address and password."),
    (WWW, "/releases/"): ("Release notes", "What changed on the moor, newest first."),
    (WWW, "/register/"): ("New account", "Choose a user name that your friends will know."),
    (WWW, "/play/"): ("Get the launcher", "Download, install, and walk out into the mist."),
    (FORUM, "/"): ("Forum", "Talk of routes, springs and the weather."),
    (WIKI, "/wiki/Main_Page"): ("Wiki", "Everything that walkers of the moor wrote down."),
}


def has_page(request: Request) -> bool:
    return request.host in (WWW, FORUM, WIKI) or (
        request.host == ACCOUNT and request.path == "/launcher/")


def page(request: Request) -> Response:
    """The page at the request's address, or the page for none."""
    if request.method not in ("GET", "HEAD"):
        return text_response(405, "Only GET and HEAD.\n", "text/plain",
                             {"Allow": "GET, HEAD"})
    if (request.host, request.path) == (ACCOUNT, "/launcher/"):
        return text_response(200, _filled("launcher.html", request))
    if (request.host, request.path) not in PLAIN:
        return not_found(request)
    title, text = PLAIN[request.host, request.path]
    return text_response(200, _filled("plain.html", request, title=title, text=text))


def not_found(request: Request) -> Response:
    text = f"There is nothing at {request.host}{request.path}."
    return text_response(404, _filled("plain.html", request, title="Not found", text=text))


def _filled(name: str, request: Request, **texts: str) -> str:
    shown = {key: html.escape(text) for key, text in texts.items()}
    links = {key: f"https://{host}{_port(request)}" for key, host in
             (("www", WWW), ("forum", FORUM), ("wiki", WIKI))}
    return _template(name).substitute(shown, domain=DOMAIN, **links)


def _port(request: Request) -> str:
    """The port that the client used; a forwarded one is not the one bound here."""
    port = request.headers.get("host", "").partition(":")[2]
    return f":{port}" if port.isdecimal() else ""


@lru_cache(maxsize=None)
def _template(name: str) -> Template:
    return Template((FOLDER / name).read_text(encoding="utf-8"))
