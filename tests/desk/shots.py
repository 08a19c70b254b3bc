#!/usr/bin/python3
"""Pictures of each window and state: shots.py FOLDER-OF-THE-PROGRAMS FOLDER-OF-THE-PICTURES, on a screen with the accessibility
service."""
import os
import subprocess
import sys
import tempfile
import time

from accessible import wait_for
from day_test import DOCUMENT, add_place, pick
from desk import ACCOUNTS, Desk, Server


class Pictures:
    def __init__(self, folder):
        self.folder = folder
        os.makedirs(folder, exist_ok=True)

    def take(self, name):
        """What is on the screen, as soon as it stands still."""
        before = None
        for _ in range(40):
            time.sleep(0.25)
            now = subprocess.run(['import', '-window', 'root', 'rgb:-'], check=True, capture_output=True).stdout
            if now == before:
                break
            before = now
        subprocess.run(['import', '-window', 'root', '-trim', '+repage', '-colors', '200', '-strip',
                        'png8:' + os.path.join(self.folder, name + '.png')], check=True)


def documents(desk, server, pictures, site):
    desk.choose('File', 'Open from', site)
    dialog = desk.window('Open File')
    wait_for('the listing', lambda: dialog.find('tree', 'files').rows())
    pictures.take('open-dialog')
    pick(dialog, 'Shared Documents', 'Annual report')
    desk.frame.find('label', 'The file is not checked out. All editing and interactive features are disabled.')
    desk.no_window()
    pictures.take('document')

    desk.frame.find('push button', 'Enable Editing').press()
    wait_for('editing', lambda: desk.can_choose('Rotate Page'))
    desk.choose('Edit', 'Rotate Page')
    server.put(DOCUMENT, 'ben', server.get(DOCUMENT, 'ben') + b'% by ben\n')
    desk.choose('File', 'Save')
    question = desk.window_with('push button', 'Overwrite')
    pictures.take('save-conflict')
    question.find('push button', 'Overwrite').press()
    desk.frame.find('label', 'The file is checked out to you.')
    pictures.take('checked-out')
    desk.frame.find('push button', 'Check In').press()
    question = desk.window_with('push button', 'Check In and Keep Checked Out')
    pictures.take('check-in')
    question.find('push button', 'Check In').press()
    desk.no_window()


def preferences(desk, pictures):
    desk.choose('File', 'Preferences…')
    window = desk.window('Preferences')
    window.find('list', 'Pages').select_row('SharePoint')
    window.find('push button', 'Advanced...')
    pictures.take('preferences')
    window.find('push button', 'Advanced...').press()
    advanced = desk.window('Advanced SharePoint Preferences')
    pictures.take('advanced-preferences')
    advanced.find('push button', 'Cancel').press()
    wait_for('the advanced dialog to go', lambda: not window.all('dialog', 'Advanced SharePoint Preferences'))
    window.find('push button', 'Cancel').press()
    desk.no_window()


def basic(programs, pictures):
    with tempfile.TemporaryDirectory() as state, Server(programs) as server:
        site = server.origin + '/sites/trial'
        with Desk(programs, state) as desk:
            add_place(desk, site)
            desk.choose('File', 'Places…')
            places = desk.window('Places')
            pictures.take('places')
            places.find('push button', 'Close').press()
            desk.no_window()
            documents(desk, server, pictures, site)
            preferences(desk, pictures)
            desk.quit()
        with Desk(programs, state, '--ribbon', server.origin + DOCUMENT.replace(' ', '%20')) as desk:
            desk.frame.find('push button', 'Enable Editing')
            pictures.take('ribbon')


def forms(programs, pictures):
    with tempfile.TemporaryDirectory() as state, Server(programs, 'forms') as server:
        with Desk(programs, state, server.origin + DOCUMENT.replace(' ', '%20')) as desk:
            desk.window('Live Login')
            time.sleep(2)  # a page is drawn by a process of its own
            pictures.take('sign-in')


def gallery(programs, pictures):
    with tempfile.TemporaryDirectory() as state, Desk(programs, state, '--gallery'):
        pictures.take('gallery')


if __name__ == '__main__':
    where = Pictures(sys.argv[2])
    for step in basic, forms, gallery:
        step(sys.argv[1], where)
