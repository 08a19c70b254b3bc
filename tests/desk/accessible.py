"""Finds and uses the parts of a running program by their accessible names and roles, as a screen reader does."""
import time

import gi
gi.require_version('Atspi', '2.0')
from gi.repository import Atspi, GLib
import pyatspi

# A press that opens a window is answered when that window has closed: nobody waits for that.
Atspi.set_timeout(700, 15000)

PATIENCE = 60.0
# A list of a hundred thousand rows has half a million children: they are never walked.
MOST_CHILDREN = 400


class NotFound(AssertionError):
    pass


def wait_for(what, probe, patience=PATIENCE):
    """What `probe` gives as soon as it gives something."""
    deadline = time.monotonic() + patience
    while True:
        try:
            found = probe()
        except Exception:  # a part that goes away while it is looked at
            found = None
        if found:
            return found
        if time.monotonic() > deadline:
            raise NotFound(what)
        time.sleep(0.05)


class Part:
    """One accessible object."""

    def __init__(self, node):
        self.node = node

    def __repr__(self):
        return f'{self.node.getRoleName()} {self.node.name!r}'

    @property
    def name(self):
        return self.node.name

    @property
    def role(self):
        return self.node.getRoleName()

    def has(self, state):
        return self.node.getState().contains(state)

    @property
    def is_enabled(self):
        return self.has(pyatspi.STATE_ENABLED) and self.has(pyatspi.STATE_SENSITIVE)

    @property
    def is_showing(self):
        return self.has(pyatspi.STATE_SHOWING)

    @property
    def is_checked(self):
        return self.has(pyatspi.STATE_CHECKED)

    def walk(self):
        waiting = [self.node]
        while waiting:
            node = waiting.pop(0)
            yield Part(node)
            try:
                if node.childCount <= MOST_CHILDREN:
                    waiting.extend(child for child in node if child is not None)
            except Exception:
                continue

    def all(self, role=None, name=None, showing=True):
        found = []
        for part in self.walk():
            try:
                if (role is None or part.role == role) and (name is None or part.name == name) and \
                        (not showing or part.is_showing):
                    found.append(part)
            except Exception:
                continue
        return found

    def find(self, role=None, name=None, showing=True, patience=PATIENCE):
        def probe():
            found = self.all(role, name, showing)
            return found and found[0]
        return wait_for(f'{role or "a part"} named {name!r} in {self}', probe, patience)

    def gone(self, role=None, name=None):
        wait_for(f'{role or "a part"} named {name!r} to go from {self}', lambda: not self.all(role, name))

    def press(self):
        try:
            self.node.queryAction().doAction(0)
        except GLib.GError:
            pass  # what it brought about is looked for next

    def type(self, text):
        self.node.queryEditableText().setTextContents(text)

    @property
    def text(self):
        interface = self.node.queryText()
        return interface.getText(0, interface.characterCount)

    def rows(self):
        """The texts of the first column."""
        table = self.node.queryTable()
        return [table.getAccessibleAt(row, 0).name for row in range(table.nRows)]

    def select_row(self, text):
        rows = wait_for(f'row {text!r} in {self}', lambda: text in self.rows() and self.rows())
        self.node.queryTable().addRowSelection(rows.index(text))


def program(pid, patience=PATIENCE):
    """The program with this process number, as soon as it shows itself."""
    def probe():
        for application in pyatspi.Registry.getDesktop(0):
            if application is not None and application.get_process_id() == pid and application.childCount > 0:
                return Part(application)
    return wait_for(f'the program {pid}', probe, patience)
