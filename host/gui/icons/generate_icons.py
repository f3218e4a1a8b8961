#!/usr/bin/env python3
"""Writes the "zeral" icon theme: one SVG per icon name, the theme index and the .qrc.

Every icon is drawn on a 24x24 grid with the same outline (1.75 units, round caps and
joins) and a small palette, so that the icons read well at 16 and 24 pixels and look
like one family. Run it after changing a drawing; its output is committed with it.
"""
import os

HERE = os.path.dirname(os.path.abspath(__file__))
THEME = "zeral"

# The palette: outlines, then the accents.
INK = "#37474f"
BLUE = "#1e88e5"
LIGHT_BLUE = "#bbdefb"
GREEN = "#43a047"
LIGHT_GREEN = "#c8e6c9"
RED = "#e53935"
LIGHT_RED = "#ffcdd2"
AMBER = "#fb8c00"
LIGHT_AMBER = "#ffe0b2"
TEAL = "#00897b"
LIGHT_TEAL = "#b2dfdb"
GREY = "#90a4ae"
LIGHT_GREY = "#eceff1"
PAPER = "#ffffff"


def stroke(color=INK, width=1.75):
    return (f'stroke="{color}" stroke-width="{width}" '
            'stroke-linecap="round" stroke-linejoin="round"')


def person(cx, color, fill, scale=1.0, dy=0.0):
    """A bust: head and shoulders centred on cx."""
    r = 3.6 * scale
    hy = 8.0 * scale + dy
    sw = 7.0 * scale
    top = hy + r + 1.6 * scale
    bottom = 20.5 * scale + dy
    return (f'<circle cx="{cx}" cy="{hy}" r="{r}" fill="{fill}" {stroke(color)}/>'
            f'<path d="M{cx - sw} {bottom} v-1.5 a{sw - 1} {bottom - top - 1} 0 0 1 {2 * sw} 0 '
            f'v1.5 z" fill="{fill}" {stroke(color)}/>')


def lock(open_shackle):
    shackle = ("M8 11 V7.5 a4 4 0 0 1 8 0 V11" if not open_shackle
               else "M8 11 V7.5 a4 4 0 0 1 7.8 -1.2")
    return (f'<path d="{shackle}" fill="none" {stroke()}/>'
            f'<rect x="5" y="11" width="14" height="10" rx="2" '
            f'fill="{LIGHT_AMBER if not open_shackle else LIGHT_GREEN}" {stroke()}/>'
            f'<path d="M12 15 v2.5" fill="none" {stroke()}/>')


def badge(mark):
    return (f'<path d="M12 2.8 L19.5 5.6 V11.5 C19.5 16.2 16.3 19.6 12 21.2 '
            f'C7.7 19.6 4.5 16.2 4.5 11.5 V5.6 Z" fill="{LIGHT_BLUE}" {stroke()}/>' + mark)


def device(body):
    return body


ICONS = {
    # Screens and actions.
    "userctl": person(15.5, INK, LIGHT_GREY, 0.8, 2.2) + person(9.5, INK, LIGHT_BLUE, 1.0, 0),
    "action-add": f'<path d="M12 4.5 V19.5 M4.5 12 H19.5" fill="none" {stroke(GREEN, 2.5)}/>',
    "action-remove": f'<path d="M6 6 L18 18 M18 6 L6 18" fill="none" {stroke(RED, 2.5)}/>',
    "action-change_password":
        f'<circle cx="8" cy="14" r="4.5" fill="{LIGHT_AMBER}" {stroke()}/>'
        f'<circle cx="8" cy="14" r="1.2" fill="{INK}"/>'
        f'<path d="M11.4 11 L19.5 3.5 M16.5 6.3 L18.8 8.6 M14.2 8.5 L16 10.3" fill="none" {stroke()}/>',
    "action-check":
        f'<rect x="3.5" y="3.5" width="17" height="17" rx="2.5" fill="{PAPER}" {stroke()}/>'
        f'<path d="M7.5 12.3 L10.8 15.5 L16.8 8.5" fill="none" {stroke(GREEN, 2.4)}/>',
    "action-uncheck":
        f'<rect x="3.5" y="3.5" width="17" height="17" rx="2.5" fill="{PAPER}" {stroke()}/>',
    "action-config":
        f'<path d="M4 7 H20 M4 12 H20 M4 17 H20" fill="none" {stroke(GREY)}/>'
        f'<circle cx="15" cy="7" r="2.3" fill="{LIGHT_BLUE}" {stroke()}/>'
        f'<circle cx="8.5" cy="12" r="2.3" fill="{LIGHT_BLUE}" {stroke()}/>'
        f'<circle cx="13" cy="17" r="2.3" fill="{LIGHT_BLUE}" {stroke()}/>',
    "action-device_reset":
        f'<rect x="8" y="8" width="8" height="8" rx="1.5" fill="{LIGHT_GREY}" {stroke()}/>'
        f'<path d="M19.5 12 A7.5 7.5 0 1 1 16.5 6" fill="none" {stroke(BLUE)}/>'
        f'<path d="M16.8 2.6 L16.6 6.2 L20.2 6.5" fill="none" {stroke(BLUE)}/>',
    "action-email":
        f'<rect x="3" y="5.5" width="18" height="13" rx="2" fill="{LIGHT_BLUE}" {stroke()}/>'
        f'<path d="M3.8 6.8 L12 13 L20.2 6.8" fill="none" {stroke()}/>',
    "action-finger":
        f'<path d="M7.5 19.5 C6 16.5 5.5 13.5 5.8 11 A6.2 6.2 0 0 1 18.2 11 '
        f'C18.4 13 18.2 15 17.6 17" fill="none" {stroke(TEAL)}/>'
        f'<path d="M10.5 20.5 C9.2 17.5 8.8 14.8 9 12 A3 3 0 0 1 15 12 '
        f'C15.2 14.5 14.8 16.8 14 19" fill="none" {stroke(TEAL)}/>'
        f'<path d="M12 12.5 C12 15.5 12.6 18 13.5 20.5 M8 4.8 A8.8 8.8 0 0 1 16 4.8" '
        f'fill="none" {stroke(TEAL)}/>',
    "action-lock": lock(False),
    "action-unlock": lock(True),
    "action-login":
        f'<path d="M13.5 3.5 H18.5 A1.5 1.5 0 0 1 20 5 V19 A1.5 1.5 0 0 1 18.5 20.5 H13.5" '
        f'fill="{LIGHT_GREY}" {stroke()}/>'
        f'<path d="M3.5 12 H14 M10.5 8.2 L14.3 12 L10.5 15.8" fill="none" {stroke(BLUE, 2.2)}/>',
    "action-offline":
        f'<circle cx="12" cy="12" r="8.5" fill="{LIGHT_GREY}" {stroke(GREY)}/>'
        f'<path d="M12 7 V12 L15 14" fill="none" {stroke(GREY)}/>'
        f'<path d="M5.8 18.2 L18.2 5.8" fill="none" {stroke(RED, 2.2)}/>',
    "action-update":
        f'<path d="M19 10 A7.3 7.3 0 0 0 5.8 8" fill="none" {stroke(BLUE)}/>'
        f'<path d="M5 14 A7.3 7.3 0 0 0 18.2 16" fill="none" {stroke(BLUE)}/>'
        f'<path d="M5.2 3.8 L5.6 8.3 L10 7.6 M18.8 20.2 L18.4 15.7 L14 16.4" fill="none" {stroke(BLUE)}/>',
    "action-clear":
        f'<path d="M8.5 5.5 H19 A1.5 1.5 0 0 1 20.5 7 V17 A1.5 1.5 0 0 1 19 18.5 H8.5 '
        f'L3 12 Z" fill="{LIGHT_GREY}" {stroke()}/>'
        f'<path d="M11 9 L17 15 M17 9 L11 15" fill="none" {stroke(INK)}/>',
    "action-search":
        f'<circle cx="10" cy="10" r="6" fill="{PAPER}" {stroke()}/>'
        f'<path d="M14.5 14.5 L20 20" fill="none" {stroke(INK, 2.4)}/>',
    "action-filter":
        f'<path d="M3.5 4.5 H20.5 L14 12.5 V19 L10 20.5 V12.5 Z" fill="{LIGHT_BLUE}" {stroke()}/>',
    "action-show_password":
        f'<path d="M2.5 12 C5 7.5 8.5 5.5 12 5.5 C15.5 5.5 19 7.5 21.5 12 '
        f'C19 16.5 15.5 18.5 12 18.5 C8.5 18.5 5 16.5 2.5 12 Z" fill="{PAPER}" {stroke()}/>'
        f'<circle cx="12" cy="12" r="3" fill="{BLUE}" {stroke()}/>',
    "action-hide_password":
        f'<path d="M2.5 12 C5 7.5 8.5 5.5 12 5.5 C15.5 5.5 19 7.5 21.5 12 '
        f'C19 16.5 15.5 18.5 12 18.5 C8.5 18.5 5 16.5 2.5 12 Z" fill="{LIGHT_GREY}" {stroke(GREY)}/>'
        f'<circle cx="12" cy="12" r="3" fill="{GREY}" {stroke(GREY)}/>'
        f'<path d="M4.5 19.5 L19.5 4.5" fill="none" {stroke(INK, 2.2)}/>',
    "action-generate":
        f'<rect x="3.5" y="9.5" width="11" height="11" rx="2" fill="{LIGHT_BLUE}" {stroke()}/>'
        f'<circle cx="7" cy="13" r="1" fill="{INK}"/><circle cx="11" cy="17" r="1" fill="{INK}"/>'
        f'<path d="M17.5 2.5 V7.5 M15 5 H20 M18.5 10.5 V13.5 M17 12 H20" fill="none" {stroke(AMBER)}/>',
    "action-save":
        f'<path d="M4.5 3.5 H16.5 L20.5 7.5 V19 A1.5 1.5 0 0 1 19 20.5 H5 A1.5 1.5 0 0 1 3.5 19 '
        f'V5 A1.5 1.5 0 0 1 5 3.5 Z" fill="{LIGHT_BLUE}" {stroke()}/>'
        f'<path d="M7.5 3.8 V8.5 H15 V3.8" fill="{PAPER}" {stroke()}/>'
        f'<rect x="7" y="13" width="10" height="7.5" fill="{PAPER}" {stroke()}/>',
    "action-expand": f'<path d="M9 6 L15 12 L9 18" fill="none" {stroke(INK, 2.2)}/>',
    "action-collapse": f'<path d="M6 9 L12 15 L18 9" fill="none" {stroke(INK, 2.2)}/>',
    # Messages and states.
    "common-cancel":
        f'<circle cx="12" cy="12" r="8.5" fill="{LIGHT_RED}" {stroke(RED)}/>'
        f'<path d="M8.8 8.8 L15.2 15.2 M15.2 8.8 L8.8 15.2" fill="none" {stroke(RED, 2.2)}/>',
    "common-mobile":
        f'<rect x="6.5" y="2.5" width="11" height="19" rx="2.2" fill="{LIGHT_GREY}" {stroke()}/>'
        f'<rect x="8.5" y="5" width="7" height="11.5" rx="0.5" fill="{LIGHT_BLUE}" stroke="none"/>'
        f'<path d="M11 19 H13" fill="none" {stroke()}/>',
    "common-online":
        f'<circle cx="12" cy="12" r="8" fill="{GREEN}" {stroke(GREEN)}/>'
        f'<path d="M8.3 12.3 L10.9 14.8 L15.8 9.4" fill="none" {stroke(PAPER, 2.2)}/>',
    "common-offline":
        f'<circle cx="12" cy="12" r="8" fill="{RED}" {stroke(RED)}/>'
        f'<path d="M8 12 H16" fill="none" {stroke(PAPER, 2.4)}/>',
    "common-warning":
        f'<path d="M12 3.5 L21 19.5 H3 Z" fill="{LIGHT_AMBER}" {stroke(AMBER)}/>'
        f'<path d="M12 9 V13.8" fill="none" {stroke(INK, 2.2)}/>'
        f'<circle cx="12" cy="16.8" r="1.2" fill="{INK}"/>',
    "common-information":
        f'<circle cx="12" cy="12" r="8.5" fill="{LIGHT_BLUE}" {stroke(BLUE)}/>'
        f'<path d="M12 11 V16.5" fill="none" {stroke(INK, 2.2)}/>'
        f'<circle cx="12" cy="7.8" r="1.2" fill="{INK}"/>',
    "common-error":
        f'<circle cx="12" cy="12" r="8.5" fill="{LIGHT_RED}" {stroke(RED)}/>'
        f'<path d="M12 7.5 V12.8" fill="none" {stroke(RED, 2.2)}/>'
        f'<circle cx="12" cy="16" r="1.2" fill="{RED}"/>',
    # Object types.
    "object-OT_USER": person(12, INK, LIGHT_BLUE),
    "object-OT_ROLE": badge(
        f'<path d="M12 7.5 L13.4 10.4 L16.5 10.8 L14.2 13 L14.8 16 L12 14.5 L9.2 16 L9.8 13 '
        f'L7.5 10.8 L10.6 10.4 Z" fill="{AMBER}" {stroke(INK, 1.2)}/>'),
    "object-OT_WORKER": person(12, INK, LIGHT_TEAL)
        + f'<path d="M12 12.8 L10.9 14.5 L12 19.5 L13.1 14.5 Z" fill="{TEAL}" {stroke(INK, 1)}/>',
    "object-OT_WORKER-d": person(12, GREY, LIGHT_GREY)
        + f'<path d="M4.5 19.5 L19.5 4.5" fill="none" {stroke(RED, 2.2)}/>',
    "object-OT_DEPARTMENT":
        f'<rect x="8.5" y="3" width="7" height="5" rx="1" fill="{LIGHT_BLUE}" {stroke()}/>'
        f'<rect x="2.5" y="16" width="7" height="5" rx="1" fill="{LIGHT_TEAL}" {stroke()}/>'
        f'<rect x="14.5" y="16" width="7" height="5" rx="1" fill="{LIGHT_TEAL}" {stroke()}/>'
        f'<path d="M12 8 V12 M6 16 V12 H18 V16" fill="none" {stroke()}/>',
    "object-OT_FIRM":
        f'<path d="M4 21 V5 A1.5 1.5 0 0 1 5.5 3.5 H13.5 A1.5 1.5 0 0 1 15 5 V21" '
        f'fill="{LIGHT_BLUE}" {stroke()}/>'
        f'<path d="M15 9.5 H18.5 A1.5 1.5 0 0 1 20 11 V21" fill="{LIGHT_GREY}" {stroke()}/>'
        f'<path d="M2.5 21 H21.5 M7.5 7.5 H8.5 M10.5 7.5 H11.5 M7.5 11 H8.5 M10.5 11 H11.5 '
        f'M7.5 14.5 H8.5 M10.5 14.5 H11.5 M17.5 13.5 V14.5 M17.5 17 V18" fill="none" {stroke()}/>',
    "object-OT_SUBJECTROOT":
        f'<path d="M3 7 A1.5 1.5 0 0 1 4.5 5.5 H9.5 L11.5 7.5 H19.5 A1.5 1.5 0 0 1 21 9 V18.5 '
        f'A1.5 1.5 0 0 1 19.5 20 H4.5 A1.5 1.5 0 0 1 3 18.5 Z" fill="{LIGHT_AMBER}" {stroke()}/>'
        f'<circle cx="12" cy="12" r="2.2" fill="{PAPER}" {stroke(INK, 1.5)}/>'
        f'<path d="M8 18 A4 3.2 0 0 1 16 18" fill="{PAPER}" {stroke(INK, 1.5)}/>',
    "object-OT_PLACING":
        f'<path d="M6 21 V4.5 A1 1 0 0 1 7 3.5 H17 A1 1 0 0 1 18 4.5 V21" fill="{LIGHT_AMBER}" {stroke()}/>'
        f'<path d="M3.5 21 H20.5" fill="none" {stroke()}/>'
        f'<circle cx="15" cy="12.5" r="1.1" fill="{INK}"/>',
    "object-OT_REPORT":
        f'<path d="M6 2.5 H14 L19 7.5 V20 A1.5 1.5 0 0 1 17.5 21.5 H6 A1.5 1.5 0 0 1 4.5 20 V4 '
        f'A1.5 1.5 0 0 1 6 2.5 Z" fill="{PAPER}" {stroke()}/>'
        f'<path d="M14 2.8 V7.5 H18.7" fill="none" {stroke()}/>'
        f'<path d="M8.5 18 V14 M11.75 18 V11 M15 18 V15.5" fill="none" {stroke(BLUE, 2.2)}/>',
    "object-OT_ACCESS_POLICY": badge(
        f'<circle cx="12" cy="10" r="2.4" fill="{PAPER}" {stroke(INK, 1.5)}/>'
        f'<path d="M12 12.4 V16.5 M12 14.8 H13.8" fill="none" {stroke(INK, 1.5)}/>'),
    "object-OT_ACCESS_POLICY_1": badge(
        f'<path d="M8.3 11.8 L11 14.4 L15.8 9" fill="none" {stroke(GREEN, 2.2)}/>'),
    "object-OT_JOB":
        f'<circle cx="12" cy="12.5" r="8.5" fill="{PAPER}" {stroke()}/>'
        f'<path d="M12 7.5 V12.5 L15.5 14.5" fill="none" {stroke(BLUE, 2)}/>'
        f'<path d="M9.5 2.5 H14.5" fill="none" {stroke()}/>',
    "object-OT_DATABASE":
        f'<path d="M4.5 6 V18 C4.5 19.9 7.9 21.5 12 21.5 C16.1 21.5 19.5 19.9 19.5 18 V6" '
        f'fill="{LIGHT_BLUE}" {stroke()}/>'
        f'<ellipse cx="12" cy="6" rx="7.5" ry="3.2" fill="{PAPER}" {stroke()}/>'
        f'<path d="M4.5 12 C4.5 13.9 7.9 15.3 12 15.3 C16.1 15.3 19.5 13.9 19.5 12" '
        f'fill="none" {stroke()}/>',
    "object-OT_MONITORING_SETTINGS":
        f'<rect x="2.5" y="3.5" width="19" height="13" rx="1.5" fill="{PAPER}" {stroke()}/>'
        f'<path d="M8.5 20.5 H15.5 M12 16.5 V20.5" fill="none" {stroke()}/>'
        f'<path d="M5 10.5 H8 L9.8 7 L12.5 13.5 L14.3 10.5 H19" fill="none" {stroke(RED, 1.75)}/>',
    "plugin-monitoring":
        f'<rect x="2.5" y="3.5" width="19" height="13" rx="1.5" fill="{LIGHT_BLUE}" {stroke()}/>'
        f'<path d="M8.5 20.5 H15.5 M12 16.5 V20.5" fill="none" {stroke()}/>'
        f'<path d="M5 10.5 H8 L9.8 7 L12.5 13.5 L14.3 10.5 H19" fill="none" {stroke(BLUE, 1.75)}/>',
    "object-OT_TERM_ZR_NOVA_E":
        f'<rect x="6" y="2.5" width="12" height="19" rx="2" fill="{LIGHT_GREY}" {stroke()}/>'
        f'<rect x="8.5" y="5" width="7" height="5" rx="0.6" fill="{LIGHT_BLUE}" {stroke(INK, 1.2)}/>'
        f'<circle cx="9.5" cy="13.5" r="0.9" fill="{INK}"/><circle cx="12" cy="13.5" r="0.9" fill="{INK}"/>'
        f'<circle cx="14.5" cy="13.5" r="0.9" fill="{INK}"/><circle cx="9.5" cy="16.5" r="0.9" fill="{INK}"/>'
        f'<circle cx="12" cy="16.5" r="0.9" fill="{INK}"/><circle cx="14.5" cy="16.5" r="0.9" fill="{INK}"/>'
        f'<circle cx="12" cy="19.3" r="0.9" fill="{GREEN}"/>',
    "object-OT_TERM_ZR_DESK":
        f'<path d="M3 17 L5.5 9.5 H18.5 L21 17 V19 A1.5 1.5 0 0 1 19.5 20.5 H4.5 A1.5 1.5 0 0 1 3 19 Z" '
        f'fill="{LIGHT_GREY}" {stroke()}/>'
        f'<ellipse cx="12" cy="14" rx="3.5" ry="2.3" fill="{LIGHT_TEAL}" {stroke(TEAL, 1.4)}/>'
        f'<path d="M3 17 H21" fill="none" {stroke()}/>',
    "object-OT_TERM_VIRTUAL_CHECKPOINT":
        f'<rect x="3.5" y="4.5" width="17" height="15" rx="2" fill="{PAPER}" '
        f'stroke="{BLUE}" stroke-width="1.75" stroke-dasharray="2.6 2.2" stroke-linecap="round"/>'
        f'<path d="M7.5 12 H16 M13 9 L16 12 L13 15" fill="none" {stroke(INK, 2)}/>',
    "object-OT_TERM_EXTERNAL_DEVICE":
        f'<rect x="3.5" y="6.5" width="11" height="11" rx="1.5" fill="{LIGHT_GREY}" {stroke()}/>'
        f'<path d="M6 4 V6.5 M9 4 V6.5 M12 4 V6.5 M6 17.5 V20 M9 17.5 V20 M12 17.5 V20" '
        f'fill="none" {stroke()}/>'
        f'<path d="M14.5 12 H21 M18.5 9.5 L21 12 L18.5 14.5" fill="none" {stroke(BLUE, 2)}/>',
}


def main():
    icon_dir = os.path.join(HERE, THEME, "scalable")
    os.makedirs(icon_dir, exist_ok=True)
    for old in os.listdir(icon_dir):
        if old.endswith(".svg"):
            os.remove(os.path.join(icon_dir, old))
    for name, body in sorted(ICONS.items()):
        with open(os.path.join(icon_dir, name + ".svg"), "w", encoding="utf-8") as f:
            f.write('<svg xmlns="http://www.w3.org/2000/svg" width="24" height="24" '
                    f'viewBox="0 0 24 24">{body}</svg>\n')
    with open(os.path.join(HERE, THEME, "index.theme"), "w", encoding="utf-8") as f:
        f.write("[Icon Theme]\nName=Zeral\nComment=Icons of the Zeral studio\n"
                "Inherits=breeze\nDirectories=scalable\n\n"
                "[scalable]\nSize=24\nMinSize=8\nMaxSize=512\nType=Scalable\n")
    with open(os.path.join(HERE, "icons.qrc"), "w", encoding="utf-8") as f:
        f.write('<!DOCTYPE RCC>\n<RCC version="1.0">\n<qresource prefix="/icons">\n')
        f.write(f"    <file>{THEME}/index.theme</file>\n")
        for name in sorted(ICONS):
            f.write(f"    <file>{THEME}/scalable/{name}.svg</file>\n")
        f.write("</qresource>\n</RCC>\n")


if __name__ == "__main__":
    main()
