namespace Tarsel {}
