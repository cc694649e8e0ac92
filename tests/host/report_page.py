"""What a page of `brindle report` is made of."""

import base64
import hashlib
import html.parser
import json


class Page(html.parser.HTMLParser):
    """Elements with their attributes, the contents of scripts and styles, and the data."""

    def __init__(self, text):
        super().__init__(convert_charrefs=True)
        self.elements = []
        self.contents = {"script": [], "style": []}
        self.open = []
        self.feed(text)
        self.close()

    def handle_starttag(self, tag, attrs):
        self.elements.append((tag, dict(attrs)))
        if tag in self.contents:
            self.contents[tag].append("")
        if tag not in ("meta", "br"):
            self.open.append(tag)

    def handle_endtag(self, tag):
        assert self.open.pop() == tag

    def handle_data(self, data):
        if self.open and self.open[-1] in self.contents:
            self.contents[self.open[-1]][-1] += data

    def attributes_of(self, tag):
        return [attributes for name, attributes in self.elements if name == tag]

    @property
    def data(self):
        (place,) = [number for number, attributes in enumerate(self.attributes_of("script"))
                    if attributes.get("type") == "application/json"]
        return json.loads(self.contents["script"][place])

    @property
    def policy(self):
        (content,) = [attributes["content"] for attributes in self.attributes_of("meta")
                      if attributes.get("http-equiv") == "Content-Security-Policy"]
        return {part.split()[0]: part.split()[1:] for part in content.split(";")}

    def rows(self):
        """By file, each an object with the columns' names."""
        data = self.data
        return {row[0]: dict(zip(data["columns"], row, strict=True)) for row in data["files"]}


def policy_hash(content):
    digest = hashlib.sha256(content.encode()).digest()
    return "'sha256-" + base64.b64encode(digest).decode() + "'"
