"""Fetches files one after the other over one connection, and throws them away: what a line allows who
does nothing else. one_connection.py BASE CA_FILE URL_FILE
"""

from __future__ import annotations

import http.client
import ssl
import sys
from urllib.parse import urlsplit


def main() -> None:
    base, authority, urls = sys.argv[1:]
    context = ssl.create_default_context(cafile=authority)
    connection = http.client.HTTPSConnection(urlsplit(base).netloc, context=context)
    with open(urls, encoding="utf-8") as lines:
        for line in lines:
            connection.request("GET", urlsplit(line.strip()).path)
            with connection.getresponse() as response:
                response.read()
                if response.status != http.client.OK:
                    raise SystemExit(f"{line.strip()}: {response.status}")


if __name__ == "__main__":
    main()
