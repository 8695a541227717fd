// The version of the package, which is that of the helper.
export const version = '0.1.0';
