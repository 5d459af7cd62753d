-- The role that an unauthenticated request takes. A hosted project has it already, a bare PostgreSQL does not.
DO $$
BEGIN
    IF to_regrole('anon') IS NULL THEN
        CREATE ROLE anon NOLOGIN NOINHERIT;
    END IF;
END
$$;
