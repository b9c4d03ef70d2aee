"""Plays the main job as a person would: an interval of 90 minutes is entered, applied, allowed and read back."""
import json
import os

from desktop import Desktop, Failure, wait_for
from sandbox import SOURCE

PICTURES = os.path.join(SOURCE, "build", "pictures")
MINUTES = 90
APPLIED = "Settings applied successfully."
UNCHANGED = "Settings already applied."


def choose(desktop, pop_up, index):
    pop_up.click()
    desktop.key("Home", *["Down"] * index, "Return")


def enter_interval(desktop):
    backups = desktop.find("check box", "Back up automatically:?")
    if not backups.checked:
        backups.click()
        wait_for("the check mark", lambda: backups.checked)
    choose(desktop, desktop.find("combo box", "When to back up"), 1)
    choose(desktop, desktop.find("combo box", "Interval unit"), 0)
    field = desktop.find("text", "Interval")
    field.click()
    desktop.key("ctrl+a")
    desktop.type(str(MINUTES))
    desktop.key("Tab")
    wait_for("the number in the field", lambda: field.text == str(MINUTES))


def take_picture(desktop, name):
    path = os.path.join(PICTURES, name + ".png")
    desktop.screenshot(path)
    print(f"  picture: {os.path.relpath(path, SOURCE)}", flush=True)


def answer(desktop):
    """The text of the application's answer, with the prompt allowed on the way if it comes."""
    def shown():
        for node in desktop.matching("dialog", "Authenticate"):
            return node, None
        for text in (APPLIED, UNCHANGED, "Failed to apply settings."):
            for role in ("alert", "dialog"):
                for node in desktop.matching(role):
                    if text in node.texts():
                        return node, text
        return None

    node, text = wait_for("the prompt or the answer", shown)
    if text:
        return text
    print("The authority asks; Authenticate is pressed.")
    take_picture(desktop, "prompt")
    node.button("Authenticate").click()
    desktop.wait_gone("dialog", "Authenticate")
    return wait_for("the answer", lambda: (shown() or (None, None))[1])


def play_on(desktop, sandbox):
    print(f"Backups every {MINUTES} minutes are entered.")
    enter_interval(desktop)
    take_picture(desktop, "interval")
    desktop.find("push button", "Apply").click()
    text = answer(desktop)
    print(f"The application says: {text}")
    take_picture(desktop, "answer")
    stored = sandbox.stored_settings()
    print("The scheduler helper has stored:")
    print(json.dumps(stored, indent=2))
    if text == APPLIED or text == UNCHANGED:
        if stored["BackupsMode"] == "Interval" and stored["Interval"] == {"Minutes": MINUTES}:
            return
    raise Failure("this is not what was entered")


def play(sandbox, virtual):
    """0 when it went well. Needs the bus and the helper."""
    os.makedirs(PICTURES, exist_ok=True)
    os.environ.update(sandbox.variables)
    with Desktop(virtual=virtual) as desktop:
        sandbox.settle(DidDismissFirstStart=True)  # also without a backup program
        sandbox.start_authority(desktop.environment)
        application = sandbox.start_application(desktop.environment)
        try:
            desktop.find("frame", "Brevane")
            play_on(desktop, sandbox)
        finally:
            sandbox.end(application)
            sandbox.end(sandbox.authority)
    return 0
