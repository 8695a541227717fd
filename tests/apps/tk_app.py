"""A Tk application: windows without an accessibility tree, and popups that are windows of their own.

Logs what is done to it. SIGUSR1 opens its menu over the label, SIGUSR2 closes it.
"""

import signal
import tkinter

from app_log import log_line

FONT = ("DejaVu Sans", 16)


def main():
    root = tkinter.Tk(className="TarqoTk")
    root.title("Guest book")
    root.geometry("460x360+120+100")
    bar = tkinter.Menu(root, font=FONT)
    menu = tkinter.Menu(bar, tearoff=0, font=FONT)
    menu.add_command(label="Print everything", command=lambda: log_line("printed"))
    menu.add_command(label="Forget everything", command=lambda: log_line("forgot"))
    bar.add_cascade(label="Actions", menu=menu)
    root.config(menu=bar)
    field = tkinter.Entry(root, font=FONT)
    field.pack(pady=12)
    tkinter.Button(root, text="Welcome", font=FONT,
                   command=lambda: log_line("welcomed " + field.get())).pack(pady=12)
    label = tkinter.Label(root, text="Nobody was here yet", font=FONT)
    label.pack(pady=12)
    label.bind("<Button-1>", lambda event: log_line("label pressed"))

    def open_menu(*unused):
        menu.post(label.winfo_rootx(), label.winfo_rooty() - 10)
        root.update()
        log_line("menu opened")

    def close_menu(*unused):
        menu.unpost()
        root.update()
        log_line("menu closed")

    signal.signal(signal.SIGUSR1, open_menu)
    signal.signal(signal.SIGUSR2, close_menu)

    def tick():  # Python handles signals only while it runs.
        root.after(20, tick)

    tick()
    root.update()
    log_line("ready")
    root.mainloop()


main()
