/*
 * Root-hub port nodes for QEMU's qemu-xhci at 00:04.0 (\_SB.PCI0.S20), p2=4,
 * p3=4, which numbers its SuperSpeed ports first (_ADR 1-4 = usb2-port1..4,
 * _ADR 5-8 = usb1-port1..4). Every connector type code, _UPC as a package
 * and as a method calling a helper as vendors write it, and a _PLD per port:
 *   SS01  package 0x03           back panel, left      group 1
 *   HS01  GUPC (One, 0x03)       back panel, left      group 1 (peer SS01)
 *   SS02  package 0x0A           right panel, upper    group 2
 *   HS02  GUPC (One, 0xFF)       not user visible      group 5
 *   SS03  package 0x09           front panel, right    group 3
 *   HS03  GUPC (One, Zero)       front panel, right    group 3 (peer SS03: the halves differ)
 *   SS04  not connectable        top panel, in the lid group 4
 *   HS04  no _UPC                bottom panel, dock    group 6
 * and three nodes that match no port, whose _UPC fails in three ways.
 * Build: iasl -p OUT firmware-ports.asl; add with -acpitable file=OUT.aml.
 */
DefinitionBlock ("", "SSDT", 2, "KORVAN", "FWPORTS", 0x00000001)
{
    External (\_SB.PCI0.S20, DeviceObj)

    Scope (\_SB.PCI0.S20)
    {
        Device (RHUB)
        {
            Name (_ADR, Zero)

            Method (GUPC, 2, Serialized)
            {
                Name (PCKG, Package (0x04) { Zero, Zero, Zero, Zero })
                PCKG [Zero] = Arg0
                PCKG [One] = Arg1
                Return (PCKG)
            }

            Method (NPKG, 0, NotSerialized) { Return (0x03) }
            Method (SPKG, 0, NotSerialized) { Return (Package () { One }) }

            Device (SS01)
            {
                Name (_ADR, 1)
                Name (_UPC, Package (0x04) { 0xFF, 0x03, Zero, Zero })
                Name (_PLD, Package (0x01) { ToPLD (PLD_Revision = 0x2, PLD_IgnoreColor = 0x1,
                    PLD_UserVisible = 1, PLD_Panel = "BACK", PLD_VerticalPosition = "CENTER",
                    PLD_HorizontalPosition = "LEFT", PLD_Shape = "HORIZONTALRECTANGLE",
                    PLD_GroupToken = 1, PLD_GroupPosition = 1) })
            }
            Device (HS01)
            {
                Name (_ADR, 5)
                Method (_UPC, 0, Serialized) { Return (GUPC (One, 0x03)) }
                Name (_PLD, Package (0x01) { ToPLD (PLD_Revision = 0x2, PLD_IgnoreColor = 0x1,
                    PLD_UserVisible = 1, PLD_Panel = "BACK", PLD_VerticalPosition = "CENTER",
                    PLD_HorizontalPosition = "LEFT", PLD_Shape = "HORIZONTALRECTANGLE",
                    PLD_GroupToken = 1, PLD_GroupPosition = 1) })
            }
            Device (SS02)
            {
                Name (_ADR, 2)
                Name (_UPC, Package (0x04) { 0xFF, 0x0A, Zero, Zero })
                Name (_PLD, Package (0x01) { ToPLD (PLD_Revision = 0x2, PLD_IgnoreColor = 0x1,
                    PLD_UserVisible = 1, PLD_Panel = "RIGHT", PLD_VerticalPosition = "UPPER",
                    PLD_HorizontalPosition = "CENTER", PLD_Shape = "OVAL",
                    PLD_GroupToken = 2, PLD_GroupPosition = 1) })
            }
            Device (HS02)
            {
                Name (_ADR, 6)
                Method (_UPC, 0, Serialized) { Return (GUPC (One, 0xFF)) }
                Name (_PLD, Package (0x01) { ToPLD (PLD_Revision = 0x2, PLD_IgnoreColor = 0x1,
                    PLD_UserVisible = 0, PLD_Panel = "UNKNOWN", PLD_VerticalPosition = "CENTER",
                    PLD_HorizontalPosition = "CENTER", PLD_Shape = "UNKNOWN",
                    PLD_GroupToken = 5, PLD_GroupPosition = 1) })
            }
            Device (SS03)
            {
                Name (_ADR, 3)
                Name (_UPC, Package (0x04) { 0xFF, 0x09, Zero, Zero })
                Name (_PLD, Package (0x01) { ToPLD (PLD_Revision = 0x2, PLD_IgnoreColor = 0x1,
                    PLD_UserVisible = 1, PLD_Panel = "FRONT", PLD_VerticalPosition = "CENTER",
                    PLD_HorizontalPosition = "RIGHT", PLD_Shape = "OVAL",
                    PLD_GroupToken = 3, PLD_GroupPosition = 1) })
            }
            Device (HS03)
            {
                Name (_ADR, 7)
                Method (_UPC, 0, Serialized) { Return (GUPC (One, Zero)) }
                Name (_PLD, Package (0x01) { ToPLD (PLD_Revision = 0x2, PLD_IgnoreColor = 0x1,
                    PLD_UserVisible = 1, PLD_Panel = "FRONT", PLD_VerticalPosition = "CENTER",
                    PLD_HorizontalPosition = "RIGHT", PLD_Shape = "OVAL",
                    PLD_GroupToken = 3, PLD_GroupPosition = 1) })
            }
            Device (SS04)
            {
                Name (_ADR, 4)
                Name (_UPC, Package (0x04) { Zero, Zero, Zero, Zero })
                Name (_PLD, Package (0x01) { ToPLD (PLD_Revision = 0x2, PLD_IgnoreColor = 0x1,
                    PLD_UserVisible = 1, PLD_Lid = 1, PLD_Panel = "TOP", PLD_VerticalPosition = "LOWER",
                    PLD_HorizontalPosition = "LEFT", PLD_Shape = "HORIZONTALRECTANGLE",
                    PLD_GroupToken = 4, PLD_GroupPosition = 1) })
            }
            Device (HS04)
            {
                Name (_ADR, 8)
                Name (_PLD, Package (0x01) { ToPLD (PLD_Revision = 0x2, PLD_IgnoreColor = 0x1,
                    PLD_UserVisible = 1, PLD_Dock = 1, PLD_Panel = "BOTTOM", PLD_VerticalPosition = "CENTER",
                    PLD_HorizontalPosition = "CENTER", PLD_Shape = "HORIZONTALRECTANGLE",
                    PLD_GroupToken = 6, PLD_GroupPosition = 1) })
            }

            Device (HS05)
            {
                Name (_ADR, 9)
                Method (_UPC, 0, Serialized)
                {
                    Local0 = Zero
                    Local1 = 0x03 / Local0
                    Return (GUPC (One, Local1))
                }
            }
            Device (HS06)
            {
                Name (_ADR, 10)
                Method (_UPC, 0, Serialized) { Return (NPKG ()) }
            }
            Device (HS07)
            {
                Name (_ADR, 11)
                Method (_UPC, 0, Serialized) { Return (SPKG ()) }
            }
        }
    }
}
