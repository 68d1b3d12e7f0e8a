"""The reference of the public headers, as HTML from what Doxygen reads in them."""
import html
import pathlib
import subprocess
import xml.etree.ElementTree

# In the order in which a program meets them.
HEADERS = ["borvan_usb.h", "borvan_wait_for_job.h", "borvan_usb_values.h", "borvan_usb_status.h",
           "borvan_usb_constants.h", "borvan_usb_version.h", "borvan_library_version.h"]
# As the headers' own test reads them: the inline functions are C and C++ alike.
SETTINGS = """
INPUT = {include}
FILE_PATTERNS = *.h
OUTPUT_DIRECTORY = {output}
OPTIMIZE_OUTPUT_FOR_C = YES
JAVADOC_AUTOBRIEF = YES
QUIET = YES
EXTRACT_STATIC = YES
WARN_AS_ERROR = FAIL_ON_WARNINGS
GENERATE_LATEX = NO
GENERATE_HTML = NO
GENERATE_XML = YES
MACRO_EXPANSION = YES
EXPAND_ONLY_PREDEF = YES
PREDEFINED = __cplusplus=201703L __cpp_exceptions \\
  "BORVAN_USB_CODES(name)=enum name" "BORVAN_USB_ASSERT(name,condition)=" BORVAN_USB_INLINE=static
EXCLUDE_SYMBOLS = BORVAN_USB_CODES BORVAN_USB_ASSERT
"""
# Doxygen's elements and those of HTML.
ELEMENTS = {"para": "p", "computeroutput": "code", "emphasis": "em", "bold": "strong",
            "itemizedlist": "ul", "orderedlist": "ol", "listitem": "li"}


def read(include, output):
    """The parsed files of all headers; ends with Doxygen's warnings if it has any."""
    settings = SETTINGS.format(include=include, output=output)
    run = subprocess.run(["doxygen", "-"], input=settings, capture_output=True, text=True, check=False)
    if run.returncode != 0 or run.stderr:
        raise SystemExit(f"doxygen: {run.stderr}")
    return [xml.etree.ElementTree.parse(page).getroot()
            for page in sorted(pathlib.Path(output, "xml").glob("*.xml"))]


def text_of(element):
    """A description as HTML; parameters and results are told apart from it."""
    if element is None:
        return ""
    parts = [html.escape(element.text or "")]
    for child in element:
        if child.tag not in ("parameterlist", "simplesect"):
            tag = ELEMENTS.get(child.tag)
            inner = text_of(child)
            parts.append(f"<{tag}>{inner}</{tag}>" if tag and inner.strip() else inner)
        parts.append(html.escape(child.tail or ""))
    return "".join(parts)


def declaration(member):
    """A name as it is declared."""
    name = member.findtext("name")
    kind = "".join(member.find("type").itertext()) if member.find("type") is not None else ""
    kind = kind.replace("static", "").strip()
    if member.get("kind") == "function":
        return f"{kind} {name}{member.findtext('argsstring')}".replace("( ", "(")
    if member.get("kind") == "define":
        return f"#define {name} {member.findtext('initializer') or ''}"
    if member.get("kind") == "typedef":
        return member.findtext("definition")
    return f"{kind} {name}"


def parameters(member):
    """The table of a function's parameters, and its result."""
    rows = []
    for item in member.iter("parameteritem"):
        name = "".join(item.find("parameternamelist").itertext()).strip()
        rows.append(f"<tr><td><code>{html.escape(name)}</code></td>"
                    f"<td>{text_of(item.find('parameterdescription'))}</td></tr>")
    for section in member.iter("simplesect"):
        if section.get("kind") == "return":
            rows.append(f"<tr><td>returns</td><td>{text_of(section)}</td></tr>")
    return f"<table class=parameters>{''.join(rows)}</table>" if rows else ""


def values(member):
    """The table of an enumeration's constants."""
    rows = []
    for value in member.findall("enumvalue"):
        number = (value.findtext("initializer") or "").lstrip("= ")
        rows.append(f"<tr id='{value.findtext('name')}'><td><code>{value.findtext('name')}</code></td>"
                    f"<td><code>{html.escape(number)}</code></td>"
                    f"<td>{text_of(value.find('briefdescription'))}"
                    f"{text_of(value.find('detaileddescription'))}</td></tr>")
    return f"<table>{''.join(rows)}</table>" if rows else ""


def entry(member):
    """One name with all that is said of it."""
    name = member.findtext("name")
    is_group = member.get("kind") == "enum" and name.startswith("@")
    heading = "" if is_group else f"<h3 id='{name}'>{name}</h3>"
    shown = "" if member.get("kind") == "enum" else \
        f"<pre><code>{html.escape(declaration(member))}</code></pre>"
    return (f"{heading}{shown}{text_of(member.find('briefdescription'))}"
            f"{text_of(member.find('detaileddescription'))}{parameters(member)}{values(member)}")


def structure(compound):
    """A structure with its members."""
    name = compound.findtext("compoundname")
    rows = "".join(f"<tr><td><code>{html.escape(declaration(member))}"
                   f"{html.escape(member.findtext('argsstring') or '')}</code></td>"
                   f"<td>{text_of(member.find('briefdescription'))}</td></tr>"
                   for member in compound.iter("memberdef"))
    return (f"<h3 id='{name}'>{name}</h3>{text_of(compound.find('briefdescription'))}"
            f"{text_of(compound.find('detaileddescription'))}<table>{rows}</table>")


def line_of(element):
    """Where an element stands in its header."""
    return int(element.find("location").get("line"))


def pages(include, output):
    """(header, HTML) for each header."""
    compounds = [compound for root in read(include, output) for compound in root.iter("compounddef")]
    structures = [compound for compound in compounds if compound.get("kind") == "struct"]
    inside = {member.get("id") for compound in structures for member in compound.iter("memberdef")}
    members = {member.get("id"): member for compound in compounds for member in compound.iter("memberdef")
               if member.get("id") not in inside}
    result = []
    for header in HEADERS:
        def is_here(element, suffix=f"/{header}"):
            return element.find("location").get("file", "").endswith(suffix)
        file = next(compound for compound in compounds
                    if compound.get("kind") == "file" and compound.findtext("compoundname") == header)
        entries = [(line_of(compound), structure(compound)) for compound in structures if is_here(compound)]
        entries += [(line_of(member), entry(member)) for member in members.values() if is_here(member)
                    and (text_of(member.find("briefdescription")) + values(member)).strip()]
        result.append((header, text_of(file.find("briefdescription")) +
                       text_of(file.find("detaileddescription")) +
                       "".join(text for _, text in sorted(entries))))
    return result
