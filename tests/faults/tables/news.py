"""Pages that are whole and odd."""

from __future__ import annotations

PAGES: tuple[tuple[str, bytes], ...] = (
    ("a page of nothing but brackets", b"<" * 2000),
    ("tags that never end", b"<div><b><i>" * 100),
    ("a table in a table, 200 deep", b"<table><tr><td>" * 200 + b"deep"),
    ("cells of a thousand columns and rows",
     b"<table>" + b"<tr><td colspan=1000 rowspan=1000>deep" * 200),
    ("a list in a list, 10,000 deep", b"<ul><li>" * 10000 + b"deep"),
    ("a script", b"<script>while(true);</script>after the script"),
    ("pictures of files", b"<img src='file:///etc/passwd'><p>a picture</p>"),
    ("a picture of nobody", b"<img src='https://nobody.localhost:1/x.png'><p>a picture</p>"),
    ("a refresh every second", b"<meta http-equiv=refresh content='1;url=/launcher/'><p>again</p>"),
    ("a frame of itself", b"<iframe src='/launcher/'></iframe><p>a frame</p>"),
    ("a form", b"<form action='https://nobody.localhost:1/'><input name=x></form><p>a form</p>"),
    ("a style that hides all", b"<style>*{display:none}</style><p>hidden</p>"),
    ("not UTF-8", b"<p>moor \xff\xfe\x80 mist</p>"),
    ("UTF-16", "<p>wide letters</p>".encode("utf-16")),
    ("a picture instead of a page", b"\x89PNG\r\n\x1a\n" + bytes(500)),
    ("a line of 2,000 letters", b"<p>" + b"m" * 2000),
    ("a line of 1,000,000 letters", b"<p>" + b"m" * 1_000_000),
    ("500 lines", b"<p>m" * 500),
    ("100,000 lines", b"<p>m" * 100_000),
)
