// Which applications may be opened.

export interface App {
  bundleId: string;
  name: string;
}

/**
 * Password stores hold what no agent is for, and are refused unless --apps names them. The same holds
 * for whatever launched the server: an agent that drives its own host could approve its own calls.
 */
const deniedByDefault = [
  'org.keepassxc.KeePassXC',
  'com.bitwarden.desktop',
  '1password',
  'com.1password.1password',
  'org.gnome.seahorse.Application',
  'org.gnome.Secrets',
  'org.kde.kwalletmanager5',
  'com.apple.keychainaccess',
  'com.apple.Passwords',
];

function names(app: App, entry: string): boolean {
  const wanted = entry.toLowerCase();
  return app.bundleId.toLowerCase() === wanted || app.name.toLowerCase() === wanted;
}

export class AppRules {
  private host: App | undefined;

  constructor(
    /** Only these, by identifier or name; undefined: all that are not denied. */
    readonly only: readonly string[] | undefined,
    readonly denied: readonly string[],
  ) {}

  /** Who launched the server, once it is known. */
  setHost(host: App | undefined): void {
    this.host = host;
  }

  /** Why the application may not be used; undefined when it may. */
  refusal(app: App): string | undefined {
    if (this.denied.some((entry) => names(app, entry))) {
      return 'it is denied by --deny';
    }
    if (this.only !== undefined) {
      return this.only.some((entry) => names(app, entry)) ? undefined : 'it is not among --apps';
    }
    if (deniedByDefault.some((entry) => names(app, entry))) {
      return 'it keeps passwords, and --apps does not name it';
    }
    if (this.host !== undefined && names(app, this.host.bundleId)) {
      return 'it launched this server, and --apps does not name it';
    }
    return undefined;
  }

  /** One line for check_setup. */
  describe(): string {
    const deny = this.denied.length === 0 ? '' : `, never ${this.denied.join(', ')}`;
    return this.only === undefined
      ? `every application but password stores and the host of this server${deny}`
      : `only ${this.only.join(', ')}${deny}`;
  }
}
