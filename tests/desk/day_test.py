#!/usr/bin/python3
"""A person's day with the desktop: day_test.py FOLDER-OF-THE-PROGRAMS, on a screen with the accessibility service.

A place is added, a document found in it and opened; the info bar tells its state; it is checked out, changed, saved against another
user's newer version, checked in with a comment; a preference is changed; and after a restart all is as it was.
"""
import sys
import tempfile

from accessible import wait_for
from desk import ACCOUNTS, Desk, Server

LIBRARY = '/sites/trial/Shared Documents'
DOCUMENT = LIBRARY + '/Annual report.pdf'


def add_place(desk, url):
    desk.choose('File', 'Places…')
    places = desk.window('Places')
    places.find('push button', 'Add…').press()
    question = desk.window('kov-desk')
    question.find('text', 'SharePoint URL:').type(url)
    wait_for('Connect can be pressed', lambda: question.find('push button', 'Connect').is_enabled)
    question.find('push button', 'Connect').press()
    sign_in(desk)
    wait_for('the place is listed', lambda: any(url in row for row in places.find('tree', 'Saved places').rows()))
    places.find('push button', 'Close').press()
    desk.no_window()


def sign_in(desk):
    prompt = desk.window('Sign in')
    prompt.find('text', 'User').type('ann')
    prompt.find('password text', 'Password').type(ACCOUNTS['ann'])
    prompt.find('push button', 'Sign in').press()


def pick(dialog, *names):
    """From folder to folder, to a document."""
    for name in names:
        dialog.find('tree', 'files').select_row(name)
        wait_for('Open can be pressed', lambda: dialog.find('push button', 'Open').is_enabled)
        dialog.find('push button', 'Open').press()


def change_warning(desk):
    """Turns the warning about documents that others hold, and gives what it was."""
    desk.choose('File', 'Preferences…')
    preferences = desk.window('Preferences')
    preferences.find('list', 'Pages').select_row('SharePoint')
    box = preferences.find('check box', 'Show warning message')
    was_checked = box.is_checked
    box.press()
    wait_for('the box to turn', lambda: box.is_checked != was_checked)
    preferences.find('push button', 'OK').press()
    desk.no_window()
    return was_checked


def main(programs):
    with tempfile.TemporaryDirectory() as state, Server(programs) as server:
        site = server.origin + '/sites/trial'
        with Desk(programs, state) as desk:
            add_place(desk, site)
            desk.choose('File', 'Open from', site)
            pick(desk.window('Open File'), 'Shared Documents', 'Annual report')
            desk.frame.find('label', 'The file is not checked out. All editing and interactive features are disabled.')
            assert not desk.can_choose('Rotate Page')

            desk.frame.find('push button', 'Enable Editing').press()
            desk.frame.find('label', 'The file is not checked out. If other users change the file on the server your will not be '
                                     'able to save changes to this file.')
            desk.choose('Edit', 'Rotate Page')
            newer = server.get(DOCUMENT, 'ben') + b'% by ben\n'
            server.put(DOCUMENT, 'ben', newer)
            desk.choose('File', 'Save')
            desk.window_with('push button', 'Overwrite').find('push button', 'Overwrite').press()
            desk.frame.find('label', 'The file is checked out to you.')

            desk.frame.find('push button', 'Check In').press()
            question = desk.window_with('push button', 'Check In and Keep Checked Out')
            question.find('text', 'Comment (optional):').type('Turned the first page')
            question.find('push button', 'Check In').press()
            desk.frame.find('label', 'The file is not checked out. All editing and interactive features are disabled.')
            assert b'/Rotate 90' in server.get(DOCUMENT, 'ben')
            assert server.last_comment('Annual report.pdf') == 'Turned the first page'

            assert not change_warning(desk)
            desk.quit()

        with Desk(programs, state) as desk:
            assert change_warning(desk), 'the preference was forgotten'
            desk.choose('File', 'Open from', site)
            pick(desk.window('Open File'), 'Shared Documents', 'Annual report')
            desk.frame.find('label', 'The file is not checked out. All editing and interactive features are disabled.')
            desk.quit()


if __name__ == '__main__':
    main(sys.argv[1])
