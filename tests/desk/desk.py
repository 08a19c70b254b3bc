"""The desktop program and the trial server as a person has them: started, used by their accessible names, ended."""
import contextlib
import os
import sqlite3
import subprocess
import sys
import tempfile
import urllib.parse
import urllib.request

import accessible
from accessible import Part, wait_for

ACCOUNTS = {'ann': 'violet-harbour', 'ben': 'copper-meadow'}


class Server:
    """A sample site with two accounts, in a folder that goes away with it."""

    def __init__(self, programs, auth='basic'):
        self.folder = tempfile.TemporaryDirectory()
        words = [os.path.join(programs, 'kov-server'), '--root', os.path.join(self.folder.name, 'site'), '--sample',
                 '--listen', '127.0.0.1:0', '--auth', auth]
        for user, password in ACCOUNTS.items():
            words += ['--user', f'{user}:{password}']
        self.process = subprocess.Popen(words, stdout=subprocess.PIPE, text=True)
        self.origin = self.process.stdout.readline().removeprefix('listening on ').strip()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait()
        self.folder.cleanup()

    def last_comment(self, name):
        """Of the newest check-in of a document of this name."""
        store = os.path.join(self.folder.name, 'site', '.kov-server', 'facts.sqlite')
        with contextlib.closing(sqlite3.connect(f'file:{store}?mode=ro', uri=True)) as database:
            rows = database.execute('SELECT comment FROM versions WHERE path LIKE ? ORDER BY number DESC', ('%/' + name.lower(),))
            return rows.fetchone()[0]

    def _request(self, method, path, user, body=None):
        passwords = urllib.request.HTTPPasswordMgrWithDefaultRealm()
        passwords.add_password(None, self.origin, user, ACCOUNTS[user])
        opener = urllib.request.build_opener(urllib.request.HTTPBasicAuthHandler(passwords))
        request = urllib.request.Request(self.origin + urllib.parse.quote(path), data=body, method=method)
        with opener.open(request) as answer:
            return answer.read()

    def get(self, path, user):
        return self._request('GET', path, user)

    def put(self, path, user, body):
        """Another user's change, which the desk knows nothing of."""
        self._request('PUT', path, user, body)


class Desk:
    """The running program. What is found is waited for."""

    def __init__(self, programs, state, *arguments):
        self.process = subprocess.Popen([os.path.join(programs, 'kov-desk'), '--state', state, *arguments])
        self.application = accessible.program(self.process.pid)

    def __enter__(self):
        return self

    def __exit__(self, kind, *_):
        if kind is not None:
            self.tell()
        self.process.kill()
        self.process.wait()

    def tell(self):
        """What is on the screen, for whoever reads a failure."""
        for window in self.application.all():
            print('  ', window, '' if window.is_enabled else '(disabled)', file=sys.stderr)

    @property
    def frame(self):
        return self.application.find('frame')

    def window(self, name=None, role='dialog'):
        """The window in front."""
        def probe():
            windows = [part for part in (Part(node) for node in self.application.node)
                       if part.role in (role, 'alert') and part.is_showing and name in (None, part.name)]
            return windows and windows[-1]
        return wait_for(f'a window {name!r}', probe)

    def window_with(self, role, name):
        """The window that shows such a part: a question by its answer."""
        def probe():
            for node in self.application.node:
                if node.getRoleName() in ('dialog', 'alert') and Part(node).all(role, name):
                    return Part(node)
        return wait_for(f'a window with a {role} named {name!r}', probe)

    def no_window(self):
        wait_for('all windows but the main one to go',
                 lambda: not [node for node in self.application.node if node.getRoleName() in ('dialog', 'alert')])

    def choose(self, *names):
        """An entry of the menus, as soon as it can be chosen."""
        part = self.frame
        for name in names[:-1]:
            part = part.find('menu item', name, showing=False)
            if len(names) > 2:
                part.press()  # the inner menus are made as they open
        entry = wait_for(f'the entry {names[-1]!r}', lambda: self._entry(part, names[-1]))
        entry.press()

    @staticmethod
    def _entry(part, name):
        found = [entry for entry in part.all('menu item', name, showing=False) if entry.is_enabled]
        return found and found[0]

    def can_choose(self, name):
        return bool(self._entry(self.frame, name))

    def quit(self):
        self.choose('File', 'Quit')
        wait_for('the program to end', lambda: self.process.poll() is not None)
        assert self.process.returncode == 0, self.process.returncode
